#include "reference_suite/audio/device/device_watch.h"

#include <algorithm>

namespace tesk_audio {

namespace {

constexpr double kPatiencePeriods = 8.0;
constexpr double kLongestStepSeconds = 0.05;
constexpr double kFastestPace = 2.0;
constexpr double kWindowSeconds = 0.5;
// What a device may fetch at once to fill its own buffers.
constexpr double kBurstSeconds = 0.25;

}  // namespace

DeviceWatch::Verdict DeviceWatch::Judge(const Look& look) {
  if (!hasLast_ || look.freewheels || last_.freewheels) windowStart_ = look;
  const bool called = !hasLast_ || look.lastCall != last_.lastCall;
  silentSeconds_ =
      called ? 0.0 : silentSeconds_ + std::min(look.seconds - last_.seconds, kLongestStepSeconds);
  hasLast_ = true;
  last_ = look;

  const double patience = std::max(look.patienceSeconds, kPatiencePeriods * look.periodFrames / look.rateHz);
  if (silentSeconds_ >= patience) return Verdict::Silent;

  const double window = look.seconds - windowStart_.seconds;
  const auto frames = static_cast<double>(look.framesAsked - windowStart_.framesAsked);
  const double most = (kFastestPace * std::max(window, kWindowSeconds) + kBurstSeconds) * look.rateHz +
                      kPatiencePeriods * look.periodFrames;
  if (frames > most) return Verdict::TooFast;
  if (window >= kWindowSeconds) windowStart_ = look;
  return Verdict::Fine;
}

}  // namespace tesk_audio
