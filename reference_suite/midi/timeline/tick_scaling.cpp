#include "reference_suite/midi/timeline/tick_scaling.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "reference_suite/midi/timeline/timeline_error.h"

namespace tesk_midi {

namespace {

constexpr std::uint64_t kLeastPpq = 480;
constexpr std::uint64_t kMostPpq = std::numeric_limits<std::uint16_t>::max();
constexpr std::uint64_t kLongestTickMicroseconds = 2500;
// The end may move by two ticks, and the largest value of all means "never".
constexpr std::uint64_t kLastTick = std::numeric_limits<std::uint32_t>::max() - 3;

std::uint64_t RoundedUp(std::uint64_t number, std::uint64_t divisor) {
  return (number + divisor - 1) / divisor;
}

std::uint64_t SlowestTempo(const StandardMidiFile& midi) {
  std::uint64_t slowest = 0;
  if (midi.tempos.empty() || midi.tempos.front().tick != 0) slowest = kDefaultMicrosecondsPerQuarter;
  for (const SmfTempo& tempo : midi.tempos) {
    slowest = std::max<std::uint64_t>(slowest, tempo.microsecondsPerQuarter);
  }
  return slowest;
}

}  // namespace

unsigned TickMultiplier(const StandardMidiFile& midi) {
  const std::uint64_t needed = std::max(kLeastPpq, RoundedUp(SlowestTempo(midi), kLongestTickMicroseconds));
  const std::uint64_t multiplier = RoundedUp(needed, midi.division);
  const std::uint64_t ppq = multiplier * midi.division;
  if (ppq > kMostPpq) {
    throw TimelineError("the song needs " + std::to_string(ppq) + " ticks per quarter note, more than " +
                        std::to_string(kMostPpq) + "; make its slowest tempo faster.");
  }
  if (midi.endTick * multiplier > kLastTick) {
    throw TimelineError("the song is " + std::to_string(midi.endTick * multiplier) +
                        " ticks long, more than " + std::to_string(kLastTick) +
                        "; see that no track ends long after the music.");
  }
  return static_cast<unsigned>(multiplier);
}

}  // namespace tesk_midi
