#pragma once

#include <string>

namespace tesk_audio {

// Turns std::bad_alloc into a TESKAudioError that names the file, or at least says what happened when there
// is not even memory for the name.
[[noreturn]] void ThrowOutOfMemory(const std::string& path);

}  // namespace tesk_audio
