#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"

namespace tesk_audio {

// Reads a song at places between its frames, closer together than they are, as a band-limited signal runs.
//
// Units      song frames, as fractions; interleaved.
// Threads    one at a time.
// Render     allocates nothing after construction.
class InBetweenReader {
 public:
  // `most` frames at a time.
  InBetweenReader(FrameSource& source, unsigned channels, std::size_t most);

  // `count` frames at `place`, `place + step`, ...; `step` greater than 0 and at most 1. From `end` on the
  // song is silent.
  void Read(double place, double step, long long end, float* frames, std::size_t count);

 private:
  static constexpr int kReach = 16;           // frames on either side that have a say
  static constexpr std::size_t kParts = 512;  // between two frames, with straight lines between them

  float Weigh_(const float* first, double part) const;

  FrameSource& source_;
  unsigned channels_;
  // One row a part: the weights of the frames from kReach - 1 before to kReach after.
  std::vector<std::array<float, 2 * kReach>> weights_;
  std::vector<float> around_;
};

}  // namespace tesk_audio
