#include "suite/midi/positions.h"

#include <iterator>

#include "reference_suite/midi/timeline/bar_span.h"
#include "reference_suite/midi/timeline/position_text.h"

namespace tesk_midi {

namespace {

std::string NumberText(std::uint64_t number) {
  return std::to_string(number);
}

[[noreturn]] void ThrowNoSuchBar(const TL::Timeline& timeline, std::uint64_t bar) {
  const auto& bars = timeline.GetBarsBeats();
  const std::string first = std::to_string(bars.begin()->GetBar());
  const std::string last = std::to_string(std::prev(bars.end())->GetBar());
  const std::string has = first == last ? "only bar " + first : "bars " + first + " to " + last;
  throw PositionError("bar " + NumberText(bar) + " does not exist: the song has " + has);
}

// The bar of that number. The one after the last exists when the song ends on its bar line.
TL::BarSpan FindBar(const TL::Timeline& timeline, std::uint64_t number) {
  const auto& bars = timeline.GetBarsBeats();
  if (bars.begin() == bars.end()) throw PositionError("the song has no bars");
  const auto first = static_cast<std::uint64_t>(bars.begin()->GetBar());
  if (number < first || number - first > bars.GetSize()) ThrowNoSuchBar(timeline, number);
  const std::uint64_t index = number - first;
  if (index < bars.GetSize()) return TL::FindBarSpan(bars, bars[index].abs_time());
  const TL::BarSpan last = TL::FindBarSpan(bars, bars[bars.GetSize() - 1].abs_time());
  if (last.end > timeline.GetMidiEndTicks()) ThrowNoSuchBar(timeline, number);
  return TL::FindBarSpan(bars, last.end);
}

std::uint64_t TickOfBarPlace(const TL::Timeline& timeline, const WrittenPlace& place) {
  const TL::BarSpan bar = FindBar(timeline, place.bar);
  if (place.beat < 1 || place.beat > bar.beats) {
    throw PositionError("beat " + NumberText(place.beat) + " of bar " + NumberText(place.bar) +
                        " does not exist: the bar has " +
                        (bar.beats == 1 ? "only beat 1" : "beats 1 to " + NumberText(bar.beats)));
  }
  return bar.BeatLine(place.beat - 1) + place.ticks;
}

}  // namespace

unsigned ResolvePlace(const TL::Timeline& timeline, const WrittenPlace& place) {
  const unsigned end = timeline.GetMidiEndTicks();
  if (place.kind == WrittenPlace::Kind::End) return end;
  const bool isTick = place.kind == WrittenPlace::Kind::Tick;
  const std::uint64_t tick = isTick ? place.ticks : TickOfBarPlace(timeline, place);
  if (tick > end) {
    throw PositionError("tick " + NumberText(tick) + " does not exist: the song ends at tick " +
                        NumberText(end) + " (" + PlaceText(timeline, end) + ")");
  }
  return static_cast<unsigned>(tick);
}

std::string PlaceText(const TL::Timeline& timeline, unsigned tick) {
  const TL::BarBeatTick place = timeline.GetBarBeatTick(tick);
  return std::to_string(place.bar) + "." + std::to_string(place.beat) + "." + std::to_string(place.tick);
}

unsigned ParsePosition(const SongData& song, const std::string& text) {
  const std::optional<WrittenPlace> place = ReadPositionText(text);
  if (!place) {
    throw PositionError(
        "not a position; write a bar (\"17\"), bar and beat (\"17.3\"), bar, beat and ticks "
        "(\"17.3.120\"), \"tick:30720\" or \"end\"");
  }
  return ResolvePlace(song.GetTimeline(), *place);
}

std::string PositionToString(const SongData& song, unsigned tick) {
  return PlaceText(song.GetTimeline(), tick);
}

}  // namespace tesk_midi
