#pragma once

#include <cstddef>
#include <vector>

namespace tesk_audio {

// Lets frames that would have come next fade out under those that come instead, at equal power, while the new
// ones fade in.
//
// Units      interleaved frames.
// Threads    one at a time.
// Render     allocates nothing after construction.
class CrossFade {
 public:
  // `frames` is its length; 0 switches it off.
  CrossFade(unsigned channels, std::size_t frames);

  std::size_t GetLength() const { return in_.size(); }
  bool IsActive() const { return position_ < in_.size(); }

  // Where the caller puts the outgoing frames, all GetLength() of them, before Begin.
  float* Outgoing() { return fresh_.data(); }
  // Starts with those. A fade under way goes on inside them, so that nothing is cut off.
  void Begin();
  // Mixes the outgoing frames into the next `count` frames; leaves them alone when no fade is under way.
  void Apply(float* frames, std::size_t count);
  void Cancel() { position_ = in_.size(); }

 private:
  unsigned channels_;
  std::vector<float> in_;        // gain of each frame that comes in
  std::vector<float> out_;       // and of each that goes out
  std::vector<float> fresh_;     // being put together
  std::vector<float> outgoing_;  // fading out
  std::size_t position_;
};

}  // namespace tesk_audio
