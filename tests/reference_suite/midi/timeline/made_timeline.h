#pragma once

#include <string>
#include <vector>

#include "reference_suite/midi/standard_midi_file/standard_midi_file.h"
#include "reference_suite/midi/timeline/timeline_builder.h"
#include "suite/midi/song_data.h"

// Songs as tests write them, without a file.
namespace made_timeline {

// Division 480, 120 quarter notes a minute from tick 0.
tesk_midi::StandardMidiFile Midi(std::uint32_t endTick, std::vector<tesk_midi::SmfMeter> meters = {});

tesk_midi::SongData Song(const tesk_midi::StandardMidiFile& midi, int firstBar = 1);

// "1@0:4x480 2@1920:3x480": number, first tick, beats and ticks per beat of every bar.
std::string BarsText(const TL::Timeline& timeline);

}  // namespace made_timeline
