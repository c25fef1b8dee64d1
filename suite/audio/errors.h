#pragma once

#include <stdexcept>

namespace tesk_audio {

// A file that cannot be read, or memory that is not there.
class TESKAudioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file that is not audio we can decode.
class AudioSampleContentError : public TESKAudioError {
 public:
  using TESKAudioError::TESKAudioError;
};

// An Ogg stream that fails.
class OggVorbisDecodeError : public TESKAudioError {
 public:
  using TESKAudioError::TESKAudioError;
};

}  // namespace tesk_audio
