#pragma once

// The source that assertion texts of this folder name, whichever of its files they come from.
namespace audio_player {

inline constexpr char kSourcePath[] = "Sources/audio_player";

}  // namespace audio_player
