#include "reference_suite/audio/stretch/late_read.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tesk_audio {

namespace {

constexpr double kWayBackSeconds = 0.25;

// Between `frames[0]` and the one after it, by the cubic through the four around.
float Between(const float* frames, unsigned channels, double part) {
  const auto c = static_cast<std::ptrdiff_t>(channels);
  const double before = frames[-c];
  const double here = frames[0];
  const double next = frames[c];
  const double after = frames[2 * c];
  const double first = 0.5 * (next - before);
  const double second = before - 2.5 * here + 2.0 * next - 0.5 * after;
  const double third = 0.5 * (after - before) + 1.5 * (here - next);
  return static_cast<float>(((third * part + second) * part + first) * part + here);
}

}  // namespace

LateRead::LateRead(FrameSource& source, double rateHz, unsigned channels, std::size_t mostFrames,
                   std::size_t mostDelay)
    : source_(source),
      channels_(channels),
      most_(static_cast<std::size_t>(std::lround(kWayBackSeconds * rateHz))),
      length_(most_),
      margin_(mostDelay + 3),
      around_((mostFrames + 2 * margin_) * channels),
      position_(length_) {}

void LateRead::Begin(double delay, std::size_t room) {
  delay_ = delay;
  length_ = std::min(most_, room);
  position_ = delay == 0.0 ? length_ : 0;
}

double LateRead::DelayAt_(std::size_t position) const {
  const double way = static_cast<double>(position) / static_cast<double>(length_);
  return delay_ * 0.5 * (1.0 + std::cos(std::numbers::pi * way));
}

void LateRead::Apply(long long index, float* frames, std::size_t count) {
  if (!IsActive()) return;
  source_.ReadAt(index - static_cast<long long>(margin_), around_.data(), count + 2 * margin_);
  const std::size_t end = std::min(count, length_ - position_);
  for (std::size_t i = 0; i < end; ++i, ++position_) {
    const double place = static_cast<double>(i + margin_) - DelayAt_(position_);
    const double whole = std::floor(place);
    const float* here = around_.data() + static_cast<std::size_t>(whole) * channels_;
    for (unsigned channel = 0; channel < channels_; ++channel) {
      *frames++ = Between(here + channel, channels_, place - whole);
    }
  }
}

}  // namespace tesk_audio
