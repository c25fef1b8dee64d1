#pragma once

#include <cstddef>

#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

// Where a part stands.
struct Place {
  float level = 1.0F;
  float pan = 0.0F;   // -1 left to 1 right, at even loudness
  float room = 0.2F;  // gain into the room
};

// Lays notes into one stereo sound of a fixed length; what reaches past its end is cut off.
//
// Threads    plain object.
class Mixer {
 public:
  explicit Mixer(std::size_t frameCount) : direct_(frameCount), room_(frameCount) {}

  // The note begins on frame `start`, on it and not near it.
  void Add(const Sound& note, std::size_t start, const Place& place);

  // The notes and the room around them; the mixer is empty afterwards.
  StereoSound Finish(double roomSeconds);

 private:
  StereoSound direct_;
  StereoSound room_;
};

}  // namespace orbel::host::demo
