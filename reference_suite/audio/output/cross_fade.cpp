#include "reference_suite/audio/output/cross_fade.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tesk_audio {

CrossFade::CrossFade(unsigned channels, std::size_t frames)
    : channels_(channels),
      in_(frames),
      out_(frames),
      fresh_(frames * channels),
      outgoing_(frames * channels),
      position_(frames) {
  for (std::size_t i = 0; i < frames; ++i) {
    const double quarter = std::numbers::pi / 2.0;
    const double angle = quarter * (static_cast<double>(i) + 0.5) / static_cast<double>(frames);
    in_[i] = static_cast<float>(std::sin(angle));
    out_[i] = static_cast<float>(std::cos(angle));
  }
}

void CrossFade::Begin() {
  Apply(fresh_.data(), GetLength());
  outgoing_.swap(fresh_);
  position_ = 0;
}

void CrossFade::Apply(float* frames, std::size_t count) {
  const std::size_t end = std::min(in_.size(), position_ + count);
  for (; position_ < end; ++position_) {
    const float* from = outgoing_.data() + position_ * channels_;
    for (unsigned channel = 0; channel < channels_; ++channel, ++frames) {
      *frames = *frames * in_[position_] + from[channel] * out_[position_];
    }
  }
}

}  // namespace tesk_audio
