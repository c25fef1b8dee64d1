#pragma once

#include <cstddef>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"

namespace tesk_audio {

// Lets recorded frames begin a little late, or early, and brings them back to their places within a quarter
// of a second, so gently that nobody hears it; from then on every sample is as it was recorded.
//
// Units      frames, interleaved.
// Threads    one at a time.
// Render     allocates nothing after construction.
class LateRead {
 public:
  // `mostFrames` at a time, at most `mostDelay` frames late or early.
  LateRead(FrameSource& source, double rateHz, unsigned channels, std::size_t mostFrames,
           std::size_t mostDelay);

  // From the next frame on; negative: early. Back within `room` frames, where that is less than a quarter of
  // a second: what stands behind them is not to be heard early.
  void Begin(double delay, std::size_t room);
  void Cancel() { position_ = length_; }
  bool IsActive() const { return position_ < length_; }
  // In place of the frames from `index` on. Leaves alone what comes after the way back.
  void Apply(long long index, float* frames, std::size_t count);

 private:
  double DelayAt_(std::size_t position) const;

  FrameSource& source_;
  unsigned channels_;
  std::size_t most_;    // frames that the way back takes
  std::size_t length_;  // and takes this time
  std::size_t margin_;  // frames read before and after
  std::vector<float> around_;
  double delay_ = 0.0;
  std::size_t position_;
};

}  // namespace tesk_audio
