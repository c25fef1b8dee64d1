#include "reference_suite/audio/stretch/in_between_reader.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tesk_audio {

namespace {

// A sinc under a window that is 0 at `reach`.
double Weight(double distance, double pass, int reach) {
  if (std::fabs(distance) >= reach) return 0.0;
  if (distance == 0.0) return pass;
  const double angle = std::numbers::pi * distance;
  const double turn = angle / reach;
  // Blackman's, whose first three terms leave less than a thousandth beside.
  const double window = 0.42 + 0.5 * std::cos(turn) + 0.08 * std::cos(2.0 * turn);
  return window * std::sin(pass * angle) / angle;
}

// In a fixed order of additions that a processor can do several of at once.
template <std::size_t Count>
float WeighedSum(const std::array<float, Count>& weights, const float* samples) {
  constexpr std::size_t kLanes = 8;
  std::array<float, kLanes> sums{};
  for (std::size_t i = 0; i < Count; i += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) sums[lane] += weights[i + lane] * samples[i + lane];
  }
  return ((sums[0] + sums[4]) + (sums[1] + sums[5])) + ((sums[2] + sums[6]) + (sums[3] + sums[7]));
}

}  // namespace

InBetweenReader::InBetweenReader(FrameSource& source, unsigned channels, std::size_t mostFrames)
    : source_(source),
      weights_(kParts + 1),
      around_((mostFrames + kTaps + 2) * channels),
      planes_(channels, std::vector<float>(mostFrames + kTaps + 2)) {
  Prepare_(1.0);
}

void InBetweenReader::Prepare_(double pass) {
  if (pass == pass_) return;
  pass_ = pass;
  for (std::size_t part = 0; part <= kParts; ++part) {
    const double place = static_cast<double>(part) / static_cast<double>(kParts);
    for (std::size_t tap = 0; tap < kTaps; ++tap) {
      const double distance = place + (kReach - 1) - static_cast<double>(tap);
      weights_[part][tap] = static_cast<float>(Weight(distance, pass, kReach));
    }
  }
}

InBetweenReader::Row InBetweenReader::WeightsAt_(double part) const {
  const double row = part * static_cast<double>(kParts);
  const auto before = std::min(static_cast<std::size_t>(row), kParts - 1);
  const auto between = static_cast<float>(row - static_cast<double>(before));
  const Row& low = weights_[before];
  const Row& high = weights_[before + 1];
  Row weights;
  for (std::size_t tap = 0; tap < kTaps; ++tap) weights[tap] = low[tap] + (high[tap] - low[tap]) * between;
  return weights;
}

void InBetweenReader::TakeAround_(long long first, long long end, std::size_t size) {
  const auto sounding =
      static_cast<std::size_t>(std::clamp<long long>(end - first, 0, static_cast<long long>(size)));
  source_.ReadAt(first, around_.data(), sounding);
  const float* frames = around_.data();
  for (std::size_t i = 0; i < sounding; ++i) {
    for (auto& plane : planes_) plane[i] = *frames++;
  }
  for (auto& plane : planes_) std::fill_n(plane.data() + sounding, size - sounding, 0.0F);
}

void InBetweenReader::Read(double place, double step, long long end, float* frames, std::size_t count) {
  if (count == 0) return;
  Prepare_(step > 1.0 ? 1.0 / step : 1.0);
  const long long first = static_cast<long long>(std::floor(place)) - (kReach - 1);
  const double last = place + step * static_cast<double>(count - 1);
  TakeAround_(first, end,
              static_cast<std::size_t>(static_cast<long long>(std::floor(last)) + kReach + 1 - first));
  for (std::size_t i = 0; i < count; ++i) {
    const double each = place + step * static_cast<double>(i);
    const double whole = std::floor(each);
    const Row weights = WeightsAt_(each - whole);
    const auto offset = static_cast<std::size_t>(static_cast<long long>(whole) - (kReach - 1) - first);
    for (const auto& plane : planes_) *frames++ = WeighedSum(weights, plane.data() + offset);
  }
}

}  // namespace tesk_audio
