#include "reference_suite/midi/timeline/bar_span.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace TL {

std::uint64_t BarSpan::BeatAt(std::uint64_t tick) const {
  // A beat line is rounded down, so the quotient can be one beat short at the line itself.
  std::uint64_t beat = std::min((tick - start) * beats / ticks, beats - 1);
  if (beat + 1 < beats && BeatLine(beat + 1) <= tick) ++beat;
  return beat;
}

BarSpan FindBarSpan(const cmn::SequenceTemplate<BarsBeats>& bars, std::uint64_t tick) {
  constexpr std::uint64_t kForEver = std::numeric_limits<std::uint32_t>::max() + std::uint64_t{1};
  if (bars.begin() == bars.end()) return {1, 0, kForEver, 1, kForEver};

  const auto next =
      std::upper_bound(std::next(bars.begin()), bars.end(), tick,
                       [](std::uint64_t at, const BarsBeats& bar) { return at < bar.abs_time(); });
  const BarsBeats& bar = *std::prev(next);
  BarSpan span{bar.GetBar(), bar.abs_time(), 0, bar.GetBeats(), bar.GetTicks()};
  if (next != bars.end()) {
    span.end = next->abs_time();
    return span;
  }
  const std::uint64_t passed = (tick - span.start) / span.ticks;
  span.bar += static_cast<std::int64_t>(passed);
  span.start += passed * span.ticks;
  span.end = span.start + span.ticks;
  return span;
}

}  // namespace TL
