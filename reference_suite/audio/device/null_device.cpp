#include "reference_suite/audio/device/null_device.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr long long kNanosecondsPerSecond = 1'000'000'000LL;
// A thread that is later than this (the machine was asleep) starts a new rhythm instead of making up for it.
constexpr int kLatePeriods = 8;
constexpr long long kRenderPatience = 2 * kNanosecondsPerSecond;
constexpr long long kAsleep = 60 * kNanosecondsPerSecond;
constexpr long long kLook = 50'000;
constexpr long long kPause = 10'000'000;

}  // namespace

NullDevice::NullDevice(double rateHz, unsigned channels, unsigned periodFrames, long long dueSince)
    : dueSince_(dueSince),
      rateHz_(rateHz),
      channels_(channels),
      periodFrames_(std::max(1U, periodFrames)),
      frames_(std::size_t{periodFrames_} * channels) {}

NullDevice::~NullDevice() {
  Stop();
}

std::string NullDevice::GetDescription() const {
  return "a clock without sound, " + std::to_string(std::lround(rateHz_)) + " Hz, " +
         std::to_string(periodFrames_) + " frames a period";
}

void NullDevice::Start(DeviceCallback& callback) {
  if (runs_) return;
  callback_ = &callback;
  shouldRun_ = true;
  thread_ = StartThread(&NullDevice::ThreadBody_, this, "The null audio device");
  runs_ = true;
}

void NullDevice::Stop() {
  if (!runs_) return;
  shouldRun_ = false;
  ::pthread_join(thread_, nullptr);
  runs_ = false;
}

void* NullDevice::ThreadBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("NullAudioDevice");
  static_cast<NullDevice*>(self)->Run_();
  return nullptr;
}

void NullDevice::Run_() noexcept {
  const double period = static_cast<double>(kNanosecondsPerSecond) * periodFrames_ / rateHz_;
  // What the device before had taken may sound for as long as that.
  while (shouldRun_ && MonotonicNow() < dueSince_) SleepUntil(std::min(dueSince_, MonotonicNow() + kPause));
  long long start = dueSince_ == 0 ? MonotonicNow() : CatchUp_(dueSince_, period);
  // Each wake-up is reckoned from the start, so that rounding never adds up to a drift.
  for (long long count = 1; shouldRun_; ++count) {
    const auto time = start + static_cast<long long>(period * static_cast<double>(count));
    SleepUntil(time);
    callback_->Process(frames_.data(), periodFrames_);
    const long long late = MonotonicNow() - time;
    if (static_cast<double>(late) <= period * kLatePeriods) continue;
    // One that stands in makes up for it, as long as the machine has not been asleep.
    start = dueSince_ == 0 || late > kAsleep ? MonotonicNow() : CatchUp_(time, period);
    count = 0;
  }
}

// Takes what has been due since `start` as fast as it is rendered. Returns from when on it goes on in time.
long long NullDevice::CatchUp_(long long start, double period) {
  long long count = 0;
  const auto due = [&] { return start + static_cast<long long>(period * static_cast<double>(count + 1)); };
  for (; shouldRun_ && due() <= MonotonicNow(); ++count) {
    const long long deadline = MonotonicNow() + kRenderPatience;
    while (shouldRun_ && !callback_->IsReady(periodFrames_) && MonotonicNow() < deadline) SleepFor(kLook);
    callback_->Process(frames_.data(), periodFrames_);
  }
  return start + static_cast<long long>(period * static_cast<double>(count));
}

}  // namespace tesk_audio
