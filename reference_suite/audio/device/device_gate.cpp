#include "reference_suite/audio/device/device_gate.h"

#include <algorithm>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/output/timed_condition.h"

namespace tesk_audio {

namespace {

// Clocks differ by far less; bursts are of one buffer.
constexpr double kFastestPace = 1.05;
constexpr double kBurstSeconds = 0.1;
constexpr double kBurstCalls = 8.0;
// More than that is a machine that slept, not a device that was late.
constexpr double kMostPassedOverSeconds = 1.0;
constexpr long long kLookNanoseconds = 50'000;

}  // namespace

DeviceGate::DeviceGate(DeviceCallback& target, unsigned channels, double rateHz, const Device* device)
    : target_(target), channels_(channels), rateHz_(rateHz), device_(device), fade_(channels) {}

void DeviceGate::Open(std::size_t fadeFrames, long long dueSince) {
  if (fadeFrames > 0) {
    fade_.Set(false);
    fade_.StartIn(fadeFrames);
  }
  dueSince_ = dueSince;
  dueTime_ = dueSince;
  open_ = true;
}

void DeviceGate::Close() {
  open_ = false;
  while (inside_) SleepFor(kLookNanoseconds);
}

void DeviceGate::Process(float* out, std::size_t frames) noexcept {
  const long long now = MonotonicNow();
  // In this order: whoever closes waits for `inside_`, and whoever comes in after that finds it closed.
  inside_ = true;
  if (open_ && MayPass_(frames, now)) {
    if (dueSince_ != 0 && device_ != nullptr) PassOver_(out, frames, now);
    target_.Process(out, frames);
    fade_.Apply(out, frames);
  } else {
    std::fill_n(out, frames * channels_, 0.0F);
  }
  inside_ = false;
  lastCall_ = now;
  asked_ += static_cast<long long>(frames);
}

void DeviceGate::PassOver_(float* out, std::size_t frames, long long now) {
  const double late = static_cast<double>(now - dueSince_) * 1e-9;
  dueSince_ = 0;
  auto left = static_cast<long long>(std::clamp(late, 0.0, kMostPassedOverSeconds) * rateHz_);
  for (; left > 0; left -= static_cast<long long>(frames)) {
    target_.Process(out, std::min(frames, static_cast<std::size_t>(left)));
  }
}

bool DeviceGate::MayPass_(std::size_t frames, long long now) {
  const auto wanted = static_cast<double>(frames);
  if (device_ == nullptr) {
    // A clock takes frames when their time has passed; it may be late, and make up for it.
    clockFrames_ += wanted;
    dueTime_ = dueSince_ + static_cast<long long>(clockFrames_ / rateHz_ * 1e9);
    return true;
  }
  if (device_->IsFreewheeling()) {
    credit_ = -1.0;
    dueTime_ = now + static_cast<long long>(wanted / rateHz_ * 1e9);
    return true;
  }
  const double most = std::max(mostCredit_, kBurstSeconds * rateHz_ + kBurstCalls * wanted);
  const double passed = static_cast<double>(now - creditTime_) * 1e-9;
  credit_ =
      credit_ < 0.0 ? most : std::min(most, credit_ + most - mostCredit_ + passed * rateHz_ * kFastestPace);
  mostCredit_ = most;
  creditTime_ = now;
  if (credit_ < wanted) return false;
  credit_ -= wanted;
  dueTime_ = now + static_cast<long long>((most - credit_) / rateHz_ * 1e9);
  return true;
}

bool DeviceGate::IsReady(std::size_t frames) const noexcept {
  lastCall_ = MonotonicNow();
  return !open_ || target_.IsReady(frames);
}

}  // namespace tesk_audio
