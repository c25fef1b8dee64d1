#pragma once

#include <memory>

#include "reference_suite/audio/decode/audio_decoder.h"
#include "reference_suite/audio/decode/audio_file.h"

namespace tesk_audio {

// Chooses the decoder by what the file contains, whatever it is called. The decoder reads `file`, which must
// outlive it. Throws TESKAudioError, AudioSampleContentError or OggVorbisDecodeError.
std::unique_ptr<AudioDecoder> OpenDecoder(AudioFile& file);

}  // namespace tesk_audio
