#include "tests/reference_suite/midi/timeline/made_timeline.h"

#include <utility>

namespace made_timeline {

tesk_midi::StandardMidiFile Midi(std::uint32_t endTick, std::vector<tesk_midi::SmfMeter> meters) {
  tesk_midi::StandardMidiFile midi;
  midi.format = 1;
  midi.division = 480;
  midi.tempos.push_back({0, 500'000});
  midi.meters = std::move(meters);
  midi.endTick = endTick;
  return midi;
}

tesk_midi::SongData Song(const tesk_midi::StandardMidiFile& midi, int firstBar) {
  tesk_midi::BuiltTimeline built = tesk_midi::BuildTimeline(midi, firstBar);
  return tesk_midi::SongData("3", "Waltz", built.pulsesPerQuarterNote, std::move(built.timeline));
}

std::string BarsText(const TL::Timeline& timeline) {
  std::string text;
  for (const TL::BarsBeats& bar : timeline.GetBarsBeats()) {
    if (!text.empty()) text += ' ';
    text += std::to_string(bar.GetBar()) + "@" + std::to_string(bar.abs_time()) + ":" +
            std::to_string(bar.GetBeats()) + "x" + std::to_string(bar.GetTicksPerBeat());
  }
  return text;
}

}  // namespace made_timeline
