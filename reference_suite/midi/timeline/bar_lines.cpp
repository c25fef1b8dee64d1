#include "reference_suite/midi/timeline/bar_lines.h"

#include <cstdint>
#include <iterator>

#include "reference_suite/midi/timeline/timeline_error.h"

namespace tesk_midi {

namespace {

// Lines are kept in sixteenths of a tick, in which every beat down to a sixty-fourth is a whole number.

constexpr std::size_t kMostWarnings = 20;

class BarLayout {
 public:
  BarLayout(unsigned pulsesPerQuarterNote, int firstBar) : ppq_(pulsesPerQuarterNote), bar_(firstBar) {}

  // Fills [meter, `end`) with bars. `cut`: the meter that begins at `end`, where a new bar begins with it.
  void Fill(const TL::Meter& meter, std::uint64_t end, const TL::Meter* cut) {
    const std::uint64_t perBeat = 16 * 4 * ppq_ / meter.GetDenominator();
    const std::uint64_t perBar = meter.GetNumerator() * perBeat;
    std::uint64_t start = 16 * std::uint64_t{meter.abs_time()};
    for (; start / 16 < end; start += perBar) {
      const bool isCut = cut != nullptr && (start + perBar) / 16 > end;
      Add_(start, isCut ? BeatsUntil_(start, perBeat, end) : meter.GetNumerator(), perBeat);
      if (isCut) Warn_(*cut);
    }
  }

  BarLines Take() {
    if (leftOut_ != 0) {
      lines_.warnings.push_back(std::to_string(leftOut_) + " more meter changes lie within a bar.");
    }
    return std::move(lines_);
  }

 private:
  void Add_(std::uint64_t start, std::uint64_t beats, std::uint64_t perBeat) {
    if (lines_.bars.GetSize() == kMostBars) {
      throw TimelineError(
          "the song has more than " + std::to_string(kMostBars) +
          " bars; see that its meters are right and that no track ends long after the music.");
    }
    lines_.bars.Add(TL::BarsBeats(static_cast<unsigned>(start / 16), bar_, static_cast<unsigned>(beats),
                                  static_cast<unsigned>(perBeat / 16), start % 16, perBeat % 16));
    ++bar_;
  }

  // As many beats as begin before `end`.
  static std::uint64_t BeatsUntil_(std::uint64_t start, std::uint64_t perBeat, std::uint64_t end) {
    std::uint64_t beats = 1;
    while ((start + beats * perBeat) / 16 < end) ++beats;
    return beats;
  }

  void Warn_(const TL::Meter& meter) {
    if (lines_.warnings.size() == kMostWarnings) {
      ++leftOut_;
      return;
    }
    lines_.warnings.push_back("the meter changes to " + std::to_string(meter.GetNumerator()) + "/" +
                              std::to_string(meter.GetDenominator()) + " within bar " +
                              std::to_string(bar_ - 1) + "; a new bar begins there, at tick " +
                              std::to_string(meter.abs_time()) + ".");
  }

  const std::uint64_t ppq_;
  int bar_;  // of the next bar
  BarLines lines_;
  std::size_t leftOut_ = 0;
};

}  // namespace

BarLines LayOutBars(const cmn::SequenceTemplate<TL::Meter>& meters, unsigned pulsesPerQuarterNote,
                    unsigned endTick, int firstBar) {
  BarLayout layout(pulsesPerQuarterNote, firstBar);
  for (auto meter = meters.begin(); meter != meters.end() && meter->abs_time() < endTick; ++meter) {
    const auto next = std::next(meter);
    const bool cut = next != meters.end() && next->abs_time() < endTick;
    layout.Fill(*meter, cut ? next->abs_time() : endTick, cut ? &*next : nullptr);
  }
  return layout.Take();
}

}  // namespace tesk_midi
