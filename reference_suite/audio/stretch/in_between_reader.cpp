#include "reference_suite/audio/stretch/in_between_reader.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tesk_audio {

namespace {

// A sinc under a window that is 0 at `reach`.
double Weight(double distance, int reach) {
  if (std::fabs(distance) >= reach) return 0.0;
  if (distance == 0.0) return 1.0;
  const double angle = std::numbers::pi * distance;
  const double turn = angle / reach;
  // Blackman's, whose first three terms leave less than a thousandth beside.
  const double window = 0.42 + 0.5 * std::cos(turn) + 0.08 * std::cos(2.0 * turn);
  return window * std::sin(angle) / angle;
}

}  // namespace

InBetweenReader::InBetweenReader(FrameSource& source, unsigned channels, std::size_t most)
    : source_(source),
      channels_(channels),
      weights_(kParts + 1),
      around_((most + 2 * kReach + 2) * channels) {
  for (std::size_t part = 0; part <= kParts; ++part) {
    const double place = static_cast<double>(part) / static_cast<double>(kParts);
    for (int tap = 0; tap < 2 * kReach; ++tap) {
      const double weight = Weight(place + (kReach - 1) - tap, kReach);
      weights_[part][static_cast<std::size_t>(tap)] = static_cast<float>(weight);
    }
  }
}

float InBetweenReader::Weigh_(const float* first, double part) const {
  const double row = part * static_cast<double>(kParts);
  const auto before = std::min(static_cast<std::size_t>(row), kParts - 1);
  const auto between = static_cast<float>(row - static_cast<double>(before));
  float low = 0.0F;
  float high = 0.0F;
  for (std::size_t tap = 0; tap < 2 * kReach; ++tap, first += channels_) {
    low += weights_[before][tap] * *first;
    high += weights_[before + 1][tap] * *first;
  }
  return low + (high - low) * between;
}

void InBetweenReader::Read(double place, double step, long long end, float* frames, std::size_t count) {
  if (count == 0) return;
  const long long first = static_cast<long long>(std::floor(place)) - (kReach - 1);
  const double last = place + step * static_cast<double>(count - 1);
  const long long size = static_cast<long long>(std::floor(last)) + kReach + 1 - first;
  const auto sounding = static_cast<std::size_t>(std::clamp(end - first, 0LL, size));
  source_.ReadAt(first, around_.data(), sounding);
  std::fill_n(around_.data() + sounding * channels_, (static_cast<std::size_t>(size) - sounding) * channels_,
              0.0F);
  for (std::size_t i = 0; i < count; ++i) {
    const double each = place + step * static_cast<double>(i);
    const double whole = std::floor(each);
    const auto offset = static_cast<std::size_t>(static_cast<long long>(whole) - (kReach - 1) - first);
    for (unsigned channel = 0; channel < channels_; ++channel) {
      *frames++ = Weigh_(around_.data() + offset * channels_ + channel, each - whole);
    }
  }
}

}  // namespace tesk_audio
