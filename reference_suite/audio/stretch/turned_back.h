#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"

namespace tesk_audio {

// A song that turns back at a place. What is behind that is not heard; the last frames before it stand in,
// backwards, and at first upside down too, so that the sound goes on without a kink.
//
// Units      song frames; interleaved.
// Threads    one at a time.
// Render     allocates nothing after construction.
class TurnedBack : public FrameSource {
 public:
  // `mostFrames` are read at a time.
  TurnedBack(FrameSource& source, double rateHz, unsigned channels, std::size_t mostFrames);

  static constexpr long long kNowhere = std::numeric_limits<long long>::max() / 2;

  // The first frame that is not heard any more.
  void TurnAt(long long index);
  void ReadAt(long long index, float* frames, std::size_t count) override;

 private:
  // Of the frames that stand in, `count` from the one at `behind` on.
  void ReadBackwards_(long long behind, float* frames, std::size_t count);

  FrameSource& source_;
  unsigned channels_;
  double turning_;  // frames until they are no longer upside down
  long long turn_ = kNowhere;
  std::vector<float> last_;  // frame before the turn
  std::vector<float> before_;
};

}  // namespace tesk_audio
