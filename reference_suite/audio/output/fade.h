#pragma once

#include <cstddef>

namespace tesk_audio {

// A gain on its way to 1 or to 0 in a straight line. At 1 it leaves every sample exactly as it is.
//
// Threads    one at a time.
// Render     allocates nothing.
class Fade {
 public:
  explicit Fade(unsigned channels) : channels_(channels) {}

  // From silence, or from where a fade-out has come to, up to full level; a whole fade takes `frames`.
  void StartIn(std::size_t frames) { Start_(1.0, frames, frames); }
  // At most `most` frames of it: where no more are to be had, it is steeper.
  void StartOut(std::size_t frames, std::size_t most) { Start_(0.0, frames, most); }
  // Without a fade, from the next frame on.
  void Set(bool audible);

  bool IsUnderWay() const { return left_ > 0; }
  // Frames until the gain has arrived.
  std::size_t GetLeft() const { return left_; }
  bool IsSilent() const { return left_ == 0 && gain_ == 0.0; }
  void Apply(float* frames, std::size_t count);

 private:
  void Start_(double target, std::size_t frames, std::size_t most);

  unsigned channels_;
  double gain_ = 1.0;
  double step_ = 0.0;  // a frame
  double target_ = 1.0;
  std::size_t left_ = 0;
};

}  // namespace tesk_audio
