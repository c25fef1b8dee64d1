#pragma once

// How a loader thread says which kind of error stopped it. The values are fixed: the player turns them back
// into exceptions of the same kinds. Errors of no kind of their own share the last one.
namespace file_loader {

inline constexpr int kOggVorbisDecodeError = 3;
inline constexpr int kAudioSampleContentError = 4;
inline constexpr int kTeskAudioError = 5;
inline constexpr int kOtherError = 6;

}  // namespace file_loader
