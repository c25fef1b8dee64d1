#include "reference_suite/audio/device/device_timeline.h"

#include <algorithm>

namespace tesk_audio {

namespace {

// After so many calls a device that has been held up, and goes on later for good, is believed.
constexpr unsigned kRound = 16;

}  // namespace

long long DeviceTimeline::Note(long long now, std::size_t frames) {
  const auto passed = static_cast<long long>(asked_ / rateHz_ * 1e9);
  const long long origin = now - passed;
  if (calls_ == 0) before_ = current_ = origin;
  if (calls_ == 2 * kRound) {
    before_ = current_;
    current_ = origin;
    calls_ = kRound;
  }
  current_ = std::min(current_, origin);
  ++calls_;
  asked_ += static_cast<double>(frames);
  return std::min(before_, current_) + passed;
}

}  // namespace tesk_audio
