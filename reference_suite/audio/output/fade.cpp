#include "reference_suite/audio/output/fade.h"

#include <algorithm>
#include <cmath>

namespace tesk_audio {

void Fade::Set(bool audible) {
  target_ = gain_ = audible ? 1.0 : 0.0;
  left_ = 0;
}

void Fade::Start_(double target, std::size_t frames, std::size_t most) {
  const double way = std::fabs(target - gain_);
  target_ = target;
  left_ = std::min(most, static_cast<std::size_t>(std::lround(way * static_cast<double>(frames))));
  if (left_ == 0) gain_ = target;
  step_ = left_ == 0 ? 0.0 : (target - gain_) / static_cast<double>(left_);
}

void Fade::Apply(float* frames, std::size_t count) {
  for (; left_ > 0 && count > 0; --count) {
    --left_;
    gain_ = left_ == 0 ? target_ : gain_ + step_;
    for (unsigned channel = 0; channel < channels_; ++channel, ++frames) {
      *frames = static_cast<float>(*frames * gain_);
    }
  }
  if (gain_ == 0.0) std::fill_n(frames, count * channels_, 0.0F);
}

}  // namespace tesk_audio
