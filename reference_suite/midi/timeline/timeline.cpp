#include "suite/midi/timeline.h"

#include <algorithm>

#include "reference_suite/midi/timeline/bar_span.h"

namespace TL {

BarBeatTick Timeline::GetBarBeatTick(unsigned tick) const {
  const BarSpan span = FindBarSpan(barsBeats_, tick);
  const std::uint64_t beat = span.BeatAt(tick);
  return {static_cast<int>(span.bar), static_cast<unsigned>(beat + 1),
          static_cast<unsigned>(tick - span.BeatLine(beat))};
}

unsigned Timeline::GetBarLineAtOrAfter(unsigned tick) const {
  const BarSpan span = FindBarSpan(barsBeats_, tick);
  const std::uint64_t line = span.Start() == tick ? tick : span.end;
  return static_cast<unsigned>(std::min<std::uint64_t>(line, midiEndTicks_));
}

unsigned Timeline::GetBeatAtOrAfter(unsigned tick) const {
  const BarSpan span = FindBarSpan(barsBeats_, tick);
  const std::uint64_t beat = span.BeatAt(tick);
  std::uint64_t line = tick;
  if (span.BeatLine(beat) != tick) line = beat + 1 < span.beats ? span.BeatLine(beat + 1) : span.end;
  return static_cast<unsigned>(std::min<std::uint64_t>(line, midiEndTicks_));
}

unsigned Timeline::GetBarStart(unsigned tick) const {
  return static_cast<unsigned>(FindBarSpan(barsBeats_, tick).Start());
}

unsigned Timeline::GetBeatStart(unsigned tick) const {
  const BarSpan span = FindBarSpan(barsBeats_, tick);
  return static_cast<unsigned>(span.BeatLine(span.BeatAt(tick)));
}

}  // namespace TL
