#pragma once

#include <string>
#include <vector>

#include "suite/midi/load_show.h"

namespace tesk_audio {
class AudioSampleContent;
}

namespace orbel::host {

class ShowFolder;

// What would fail or surprise in one song, its audio decoded at its own rate.
std::vector<tesk_midi::Problem> CheckSongAudio(const ShowFolder& show, const std::string& song,
                                               const tesk_audio::AudioSampleContent& content);

// Cues that the output cannot play, and an attacca that leads nowhere. Needs no audio.
std::vector<tesk_midi::Problem> CheckSongCues(const ShowFolder& show, const std::string& song);

}  // namespace orbel::host
