#include "reference_suite/audio/stretch/turned_back.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tesk_audio {

namespace {

constexpr double kTurningSeconds = 0.0025;

}  // namespace

TurnedBack::TurnedBack(FrameSource& source, double rateHz, unsigned channels, std::size_t mostFrames)
    : source_(source),
      channels_(channels),
      turning_(kTurningSeconds * rateHz),
      last_(channels),
      before_(mostFrames * channels) {}

void TurnedBack::TurnAt(long long index) {
  if (index == turn_) return;
  turn_ = index;
  if (turn_ != kNowhere) source_.ReadAt(turn_ - 1, last_.data(), 1);
}

void TurnedBack::ReadAt(long long index, float* frames, std::size_t count) {
  const auto known =
      static_cast<std::size_t>(std::clamp<long long>(turn_ - index, 0, static_cast<long long>(count)));
  source_.ReadAt(index, frames, known);
  if (known == count) return;
  ReadBackwards_(index + static_cast<long long>(known) - turn_, frames + known * channels_, count - known);
}

// From `behind` frames behind the turn on.
void TurnedBack::ReadBackwards_(long long behind, float* frames, std::size_t count) {
  source_.ReadAt(turn_ - 1 - behind - static_cast<long long>(count), before_.data(), count);
  const float* from = before_.data() + count * channels_;
  for (std::size_t i = 0; i < count; ++i) {
    from -= channels_;
    const auto frame = static_cast<double>(behind) + static_cast<double>(i) + 1.0;
    const double way = std::min(1.0, frame / turning_);
    const auto upsideDown = static_cast<float>(1.0 + std::cos(std::numbers::pi * way));
    for (unsigned channel = 0; channel < channels_; ++channel)
      *frames++ = from[channel] + upsideDown * (last_[channel] - from[channel]);
  }
}

}  // namespace tesk_audio
