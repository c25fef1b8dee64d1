#pragma once

#include <string>
#include <vector>

#include "suite/midi/timeline.h"

namespace tesk_midi {

// A song of more bars than this is a damaged file: at 120 quarter notes a minute it would last 55 hours.
inline constexpr std::size_t kMostBars = 100'000;

struct BarLines {
  cmn::SequenceTemplate<TL::BarsBeats> bars;
  std::vector<std::string> warnings;  // of meters that change within a bar
};

// Lays out the bars of a song, without a gap from tick 0 up to `endTick`, which is greater than 0.
// `meters`: at least one, the first at tick 0, ascending, one at a tick. A bar begins at every meter; where a
// beat is not a whole number of ticks each line is rounded down for itself, so that nothing drifts.
// Throws TimelineError when there are more than kMostBars.
BarLines LayOutBars(const cmn::SequenceTemplate<TL::Meter>& meters, unsigned pulsesPerQuarterNote,
                    unsigned endTick, int firstBar);

}  // namespace tesk_midi
