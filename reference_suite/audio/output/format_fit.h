#pragma once

#include <string>

#include "suite/audio/audio_sample_content.h"

namespace tesk_audio {

// True when the content can be played at this rate with these channels; otherwise a text that names both
// formats.
bool FormatFits(const AudioSampleContent& content, double rateHz, unsigned channels, std::string* errorText);

}  // namespace tesk_audio
