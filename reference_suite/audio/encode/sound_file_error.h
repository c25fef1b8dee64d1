#pragma once

#include <string>

#include "suite/audio/errors.h"

namespace tesk_audio {

// A sound file that cannot be written; names the file. Asking again does not help: somebody has to make room
// or to choose another name.
class SoundFileError : public TESKAudioError {
 public:
  explicit SoundFileError(const std::string& message) : TESKAudioError(message) {}
};

}  // namespace tesk_audio
