#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"

namespace tesk_audio {

// Reads a song at places between its frames, as a band-limited signal runs: closer together than they are, or
// further apart; then without the frequencies that the places could no longer tell from lower ones.
//
// Units      song frames, as fractions; interleaved.
// Threads    one at a time.
// Render     allocates nothing after construction. Another step above 1 costs some tenths of a millisecond.
class InBetweenReader {
 public:
  static constexpr int kReach = 16;  // frames on either side that have a say

  // `mostFrames` of the song at a time, from the first to the last place.
  InBetweenReader(FrameSource& source, unsigned channels, std::size_t mostFrames);

  // `count` frames at `place`, `place + step`, ...; `step` greater than 0. From `end` on the song is silent.
  void Read(double place, double step, long long end, float* frames, std::size_t count);

 private:
  static constexpr std::size_t kTaps = 2 * kReach;
  static constexpr std::size_t kParts = 512;  // between two frames, with straight lines between them
  using Row = std::array<float, kTaps>;

  // The weights that let pass what lies below so much of half the frame rate.
  void Prepare_(double pass);
  void TakeAround_(long long first, long long end, std::size_t size);
  Row WeightsAt_(double part) const;

  FrameSource& source_;
  double pass_ = 0.0;
  std::vector<Row> weights_;  // one row a part: from kReach - 1 frames before to kReach after
  std::vector<float> around_;
  std::vector<std::vector<float>> planes_;  // the same, one channel each
};

}  // namespace tesk_audio
