#pragma once

#include <cstddef>
#include <vector>

namespace tesk_audio {

// What was being heard and is dropped, fading out under what comes in its place.
//
// Units      interleaved frames.
// Threads    one at a time.
// Render     allocates nothing but at construction.
class DroppedTail {
 public:
  // Of at most `frames`.
  DroppedTail(std::size_t frames, unsigned channels);

  bool IsEmpty() const { return left_ == 0; }
  // Frames that are still to be heard.
  std::size_t GetLeft() const { return left_; }
  // These sound from the next frame on, together with what is left; at most as many as it was made for.
  void Add(const float* frames, std::size_t count);
  void MixInto(float* out, std::size_t count);

 private:
  unsigned channels_;
  std::vector<float> samples_;
  std::size_t begin_ = 0;  // frames
  std::size_t left_ = 0;
};

}  // namespace tesk_audio
