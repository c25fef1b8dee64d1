#pragma once

#include <string>

namespace tesk_audio {

// Whether ALSA has a sound card, by what it keeps in that folder. Cards keep their numbers: the first may be
// missing.
bool AlsaHasCards(const std::string& folder = "/dev/snd");

}  // namespace tesk_audio
