#pragma once

#include <stdexcept>
#include <string>

namespace tesk_audio {

// A file that cannot be read, or memory that is not there.
class TESKAudioError : public std::runtime_error {
 public:
  explicit TESKAudioError(const std::string& message) : std::runtime_error(message) {}
};

// A file that is not audio we can decode.
class AudioSampleContentError : public TESKAudioError {
 public:
  explicit AudioSampleContentError(const std::string& message) : TESKAudioError(message) {}
};

// An Ogg stream that fails.
class OggVorbisDecodeError : public TESKAudioError {
 public:
  explicit OggVorbisDecodeError(const std::string& message) : TESKAudioError(message) {}
};

}  // namespace tesk_audio
