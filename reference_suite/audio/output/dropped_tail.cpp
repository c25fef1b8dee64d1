#include "reference_suite/audio/output/dropped_tail.h"

#include <algorithm>
#include <functional>

namespace tesk_audio {

DroppedTail::DroppedTail(std::size_t frames, unsigned channels)
    : channels_(channels), samples_(frames * channels) {}

void DroppedTail::Add(const float* frames, std::size_t count) {
  float* const samples = samples_.data();
  std::copy_n(samples + begin_ * channels_, left_ * channels_, samples);
  begin_ = 0;
  if (count > left_) std::fill_n(samples + left_ * channels_, (count - left_) * channels_, 0.0F);
  std::transform(frames, frames + count * channels_, samples, samples, std::plus<>());
  left_ = std::max(left_, count);
}

void DroppedTail::MixInto(float* out, std::size_t count) {
  const std::size_t frames = std::min(count, left_);
  const float* const samples = samples_.data() + begin_ * channels_;
  std::transform(out, out + frames * channels_, samples, out, std::plus<>());
  begin_ += frames;
  left_ -= frames;
}

}  // namespace tesk_audio
