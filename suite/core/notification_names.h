#pragma once

#include <string>

namespace notify::names {

// The output ran out at the end of a song; argument null. Called on the output's thread.
inline const std::string stopped_at_end_of_song = "stopped_at_end_of_song";

}  // namespace notify::names
