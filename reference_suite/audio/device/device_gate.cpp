#include "reference_suite/audio/device/device_gate.h"

#include <algorithm>
#include <cmath>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/output/monotonic_now.h"

namespace tesk_audio {

namespace {

// Clocks differ by far less; bursts are of one buffer.
constexpr double kFastestPace = 1.05;
constexpr double kBurstSeconds = 0.1;
constexpr double kBurstCalls = 8.0;
// More than that is a machine that slept, not a device that was late: an idle sound server asks every two
// seconds.
constexpr double kMostPassedOverSeconds = 3.0;
constexpr long long kLookNanoseconds = 50'000;

long long Nanoseconds(double frames, double rateHz) {
  return static_cast<long long>(frames / rateHz * 1e9);
}

}  // namespace

DeviceGate::DeviceGate(DeviceCallback& target, unsigned channels, double rateHz, const Device* device)
    : target_(target),
      channels_(channels),
      rateHz_(rateHz),
      device_(device),
      timeline_(rateHz),
      fade_(channels) {}

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
  NoteStart_(frames, now);
  if (open_ && MayPass_(frames, now) && HasCaughtUp_(out, frames)) {
    target_.Process(out, frames);
    fade_.Apply(out, frames);
    if (device_ != nullptr) {
      dueTime_ = startsAt_ + Nanoseconds(static_cast<double>(frames), rateHz_) + GetLatency_();
    }
  } else {
    std::fill_n(out, frames * channels_, 0.0F);
  }
  inside_ = false;
  lastCall_ = now;
  asked_ += static_cast<long long>(frames);
}

// Also while the gate is closed: when it opens the device's pace is known.
void DeviceGate::NoteStart_(std::size_t frames, long long now) {
  const bool freewheels = device_ != nullptr && device_->IsFreewheeling();
  if (freewheels) timeline_.Forget();
  startsAt_ = timeline_.Note(now, frames);
}

// Nanoseconds from a call to the loudspeaker, as far as they are believed.
long long DeviceGate::GetLatency_() const {
  const double seconds = device_->GetLatencyFrames() / rateHz_;
  return static_cast<long long>(std::min(seconds, kMostPassedOverSeconds) * 1e9);
}

// No more at a time than is there: what is passed over before it is rendered would be heard later than it is
// due, and everything behind it.
bool DeviceGate::HasCaughtUp_(float* out, std::size_t frames) {
  if (dueSince_ == 0 || device_ == nullptr) return true;
  const double late = static_cast<double>(startsAt_ + GetLatency_() - dueSince_) * 1e-9;
  // What the device before had taken still sounds.
  if (late * rateHz_ <= -static_cast<double>(frames)) return false;
  auto left = static_cast<std::size_t>(std::lround(std::clamp(late, 0.0, kMostPassedOverSeconds) * rateHz_));
  while (left > 0) {
    const std::size_t count = std::min(frames, left);
    if (!target_.IsReady(count)) break;
    target_.Process(out, count);
    dueSince_ += Nanoseconds(static_cast<double>(count), rateHz_);
    dueTime_ = dueSince_;
    left -= count;
  }
  if (late > kMostPassedOverSeconds || (left == 0 && target_.IsReady(frames))) {
    dueSince_ = 0;
    return true;
  }
  // By the next call this one is due as well.
  static_cast<void>(target_.IsReady(left + 2 * frames));
  return false;
}

bool DeviceGate::MayPass_(std::size_t frames, long long now) {
  const auto wanted = static_cast<double>(frames);
  if (device_ == nullptr) {
    // A clock takes frames when their time has passed; it may be late, and make up for it.
    clockFrames_ += wanted;
    dueTime_ = dueSince_ + Nanoseconds(clockFrames_, rateHz_);
    return true;
  }
  if (device_->IsFreewheeling()) {
    credit_ = -1.0;
    return true;
  }
  const double most = std::max(mostCredit_, kBurstSeconds * rateHz_ + kBurstCalls * wanted);
  const double passed = static_cast<double>(now - creditTime_) * 1e-9;
  credit_ =
      credit_ < 0.0 ? most : std::min(most, credit_ + most - mostCredit_ + passed * rateHz_ * kFastestPace);
  mostCredit_ = most;
  creditTime_ = now;
  if (credit_ < wanted) {
    silent_ += static_cast<long long>(frames);
    return false;
  }
  credit_ -= wanted;
  return true;
}

bool DeviceGate::IsReady(std::size_t frames) const noexcept {
  lastCall_ = MonotonicNow();
  return !open_ || target_.IsReady(frames);
}

}  // namespace tesk_audio
