#pragma once

#include <cstdint>
#include <vector>

#include "host/demo/score/score.h"

namespace orbel::host::demo {

// Where the ticks of a song lie in its audio.
//
// Units      frame: audio frames at `rate` from the first frame of tick `audioStart`; ticks before it give 0.
// Arithmetic seconds per tick in double, frames in long double, each tempo's stretch rounded by itself: the
//            same steps as those with which the engine finds the ticks again, so that a note lies on the very
//            frame.
// Threads    plain object.
class TempoMap {
 public:
  // Where no tempo stands at tick 0, 120 quarter notes per minute hold.
  TempoMap(const Score& score, Tick audioStart, unsigned rate);

  std::int64_t FrameAt(Tick tick) const;

 private:
  struct Stretch {
    Tick tick;
    std::int64_t frame;
    double secondsPerTick;
  };

  std::int64_t FramesOf_(Tick ticks, double secondsPerTick) const;

  long double rate_;
  std::vector<Stretch> stretches_;  // from the audio start on, in tick order
};

}  // namespace orbel::host::demo
