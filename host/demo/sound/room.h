#pragma once

#include <array>
#include <vector>

#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

// A small hall: eight delay lines that feed each other, each round darker and softer than the one before.
//
// Threads    plain object; made for one pass over one sound.
class Room {
 public:
  // `seconds` until the hall is 60 dB down.
  explicit Room(double seconds);

  // Replaces what went into the room by what comes back from its walls.
  void Fill(StereoSound& sound);

 private:
  static constexpr std::size_t kLineCount = 8;
  using Frame = std::array<float, kLineCount>;

  // Turns what leaves the lines into what enters them, losing nothing.
  static void Scatter_(Frame& frame);

  struct Line {
    std::vector<float> samples;
    std::size_t position = 0;
    float loss = 0.0F;
    float darkened = 0.0F;
  };
  std::array<Line, kLineCount> lines_;
};

}  // namespace orbel::host::demo
