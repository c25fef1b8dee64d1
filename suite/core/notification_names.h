#pragma once

#include <string>

namespace notify::names {

// The output ran out at the end of a song; argument null. Called on the output's thread.
inline const std::string stopped_at_end_of_song = "stopped_at_end_of_song";

// The audio device has failed, stays away for another reason than was told, or there is one again; argument a
// notify::DeviceUpdate. Called on a thread of the output's.
inline const std::string audio_device_changed = "audio_device_changed";

// How the live output is doing, ten times a second; argument a notify::MetersUpdate. Called on a thread of
// the output's.
inline const std::string audio_meters = "audio_meters";

}  // namespace notify::names
