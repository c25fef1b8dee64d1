#pragma once

#include <cstddef>

namespace tesk_audio {

// Frames of song audio at any place, without moving the position.
class FrameSource {
 public:
  virtual ~FrameSource() = default;
  // Frames [index, index + count), interleaved; silence where there is no audio. Allocates nothing.
  virtual void ReadAt(long long index, float* frames, std::size_t count) = 0;
};

}  // namespace tesk_audio
