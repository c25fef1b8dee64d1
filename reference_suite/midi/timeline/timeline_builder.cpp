#include "reference_suite/midi/timeline/timeline_builder.h"

#include <algorithm>
#include <utility>

#include "reference_suite/midi/timeline/bar_lines.h"
#include "reference_suite/midi/timeline/tick_scaling.h"

namespace tesk_midi {

namespace {

template <typename Event>
cmn::SequenceTemplate<Event> LastOfEachTick(const std::vector<Event>& events) {
  cmn::SequenceTemplate<Event> kept;
  for (std::size_t i = 0; i < events.size(); ++i) {
    const bool last = i + 1 == events.size() || events[i + 1].abs_time() != events[i].abs_time();
    if (last) kept.Add(events[i]);
  }
  return kept;
}

// The events of the file at the ticks of the song. `from` makes one event out of one of the file's and its
// tick.
template <typename Event, typename SmfEvent, typename Function>
std::vector<Event> Scaled(const std::vector<SmfEvent>& events, unsigned multiplier, Function from) {
  std::vector<Event> scaled;
  scaled.reserve(events.size() + 1);
  for (const SmfEvent& event : events) scaled.push_back(from(event.tick * multiplier, event));
  return scaled;
}

std::vector<TL::Tempo> Tempos(const StandardMidiFile& midi, unsigned multiplier) {
  auto tempos = Scaled<TL::Tempo>(midi.tempos, multiplier, [](unsigned tick, const SmfTempo& tempo) {
    return TL::Tempo(tick, tempo.microsecondsPerQuarter);
  });
  if (tempos.empty() || tempos.front().abs_time() != 0) {
    tempos.insert(tempos.begin(), TL::Tempo(0, kDefaultMicrosecondsPerQuarter));
  }
  return tempos;
}

std::vector<TL::Meter> Meters(const StandardMidiFile& midi, unsigned multiplier) {
  auto meters = Scaled<TL::Meter>(midi.meters, multiplier, [](unsigned tick, const SmfMeter& meter) {
    return TL::Meter(tick, meter.numerator, meter.denominator);
  });
  if (meters.empty() || meters.front().abs_time() != 0) meters.insert(meters.begin(), TL::Meter(0, 4, 4));
  return meters;
}

}  // namespace

BuiltTimeline BuildTimeline(const StandardMidiFile& midi, int firstBar) {
  if (midi.endTick == 0) {
    throw TimelineError("the song has a length of 0; let its last track end after the music.");
  }
  const unsigned multiplier = TickMultiplier(midi);
  const unsigned end = midi.endTick * multiplier;

  BuiltTimeline built;
  built.pulsesPerQuarterNote = static_cast<unsigned short>(midi.division * multiplier);
  built.timeline.SetTempos(LastOfEachTick(Tempos(midi, multiplier)));
  built.timeline.SetMeters(LastOfEachTick(Meters(midi, multiplier)));
  built.timeline.SetKeys(
      LastOfEachTick(Scaled<TL::Key>(midi.keys, multiplier, [](unsigned tick, const SmfKey& key) {
        return TL::Key(tick, key.sharps, key.minor);
      })));
  built.timeline.SetMidiEndTicks(end);
  BarLines lines = LayOutBars(built.timeline.GetMeters(), built.pulsesPerQuarterNote, end, firstBar);
  built.timeline.SetBarsBeats(std::move(lines.bars));
  built.markers = Scaled<CL::Marker>(midi.markers, multiplier, [](unsigned tick, const SmfMarker& marker) {
    return CL::Marker(tick, marker.name, 0);
  });
  built.warnings = std::move(lines.warnings);
  return built;
}

void MoveEndBehindLoop(TL::Timeline* timeline, unsigned loopEnd) {
  if (loopEnd != GetPlaybackEnd(*timeline)) return;
  const unsigned moved = loopEnd + 2;
  if (timeline->GetAudioEndTicks() != 0) timeline->SetAudioEndTicks(moved);
  timeline->SetMidiEndTicks(std::max(timeline->GetMidiEndTicks(), moved));
}

unsigned GetPlaybackEnd(const TL::Timeline& timeline) {
  const unsigned audioEnd = timeline.GetAudioEndTicks();
  return audioEnd == 0 ? timeline.GetMidiEndTicks() : audioEnd;
}

}  // namespace tesk_midi
