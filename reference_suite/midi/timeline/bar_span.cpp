#include "reference_suite/midi/timeline/bar_span.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace TL {

namespace {

// How many stretches of `length` lie wholly before the end of `tick`, counted from `start`; all but `tick` in
// sixteenths. A line that is rounded down to a tick belongs to it whole.
std::uint64_t WholeStretches(std::uint64_t start, std::uint64_t length, std::uint64_t tick) {
  return (16 * tick + 15 - start) / length;
}

}  // namespace

std::uint64_t BarSpan::BeatAt(std::uint64_t tick) const {
  return std::min(WholeStretches(startSixteenths, sixteenthsPerBeat, tick), beats - 1);
}

BarSpan FindBarSpan(const cmn::SequenceTemplate<BarsBeats>& bars, std::uint64_t tick) {
  constexpr std::uint64_t kForEver = std::numeric_limits<std::uint32_t>::max() + std::uint64_t{1};
  if (bars.begin() == bars.end()) return {1, 0, 16 * kForEver, 1, kForEver};

  const auto next =
      std::upper_bound(std::next(bars.begin()), bars.end(), tick,
                       [](std::uint64_t at, const BarsBeats& bar) { return at < bar.abs_time(); });
  const BarsBeats& bar = *std::prev(next);
  BarSpan span{bar.GetBar(), bar.GetStartSixteenths(), bar.GetSixteenthsPerBeat(), bar.GetBeats(), 0};
  if (next != bars.end()) {
    span.end = next->abs_time();
    return span;
  }
  const std::uint64_t length = span.beats * span.sixteenthsPerBeat;
  const std::uint64_t passed = WholeStretches(span.startSixteenths, length, tick);
  span.bar += static_cast<std::int64_t>(passed);
  span.startSixteenths += passed * length;
  span.end = span.BeatLine(span.beats);
  return span;
}

}  // namespace TL
