#include "reference_suite/midi/timeline/bar_lines.h"

#include <cstdint>
#include <iterator>

#include "reference_suite/midi/timeline/timeline_error.h"

namespace tesk_midi {

namespace {

constexpr std::size_t kMostWarnings = 20;

class BarLayout {
 public:
  BarLayout(unsigned pulsesPerQuarterNote, int firstBar) : ppq_(pulsesPerQuarterNote), bar_(firstBar) {}

  // Fills [meter, `end`) with bars. `cut`: `end` is the next meter, at which a new bar begins.
  void Fill(const TL::Meter& meter, std::uint64_t end, const TL::Meter* cut) {
    const std::uint64_t beats = meter.GetNumerator();
    for (std::uint64_t index = 0;; ++index) {
      const std::uint64_t start = meter.abs_time() + Ticks_(meter, index * beats);
      const std::uint64_t next = meter.abs_time() + Ticks_(meter, (index + 1) * beats);
      if (start >= end) return;
      if (cut != nullptr && next > end) {
        AddCut_(meter, start, end);
        Warn_(*cut);
        return;
      }
      Add_(meter, start, beats, next - start);
    }
  }

  BarLines Take() {
    if (leftOut_ != 0) {
      lines_.warnings.push_back(std::to_string(leftOut_) + " more meter changes lie within a bar.");
    }
    return std::move(lines_);
  }

 private:
  // `count` beats of a meter in ticks, rounded down.
  std::uint64_t Ticks_(const TL::Meter& meter, std::uint64_t count) const {
    return count * 4 * ppq_ / meter.GetDenominator();
  }

  void Add_(const TL::Meter& meter, std::uint64_t start, std::uint64_t beats, std::uint64_t ticks) {
    if (lines_.bars.GetSize() == kMostBars) {
      throw TimelineError(
          "the song has more than " + std::to_string(kMostBars) +
          " bars; see that its meters are right and that no track ends long after the music.");
    }
    lines_.bars.Add(TL::BarsBeats(static_cast<unsigned>(start), bar_, static_cast<unsigned>(beats),
                                  static_cast<unsigned>(Ticks_(meter, 1)), static_cast<unsigned>(ticks)));
    ++bar_;
  }

  // As many beats as begin before the cut.
  void AddCut_(const TL::Meter& meter, std::uint64_t start, std::uint64_t end) {
    std::uint64_t beats = 1;
    while (start + Ticks_(meter, beats) < end) ++beats;
    Add_(meter, start, beats, Ticks_(meter, beats));
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
