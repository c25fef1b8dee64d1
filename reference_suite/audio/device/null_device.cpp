#include "reference_suite/audio/device/null_device.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <string>
#include <system_error>

#include "suite/audio/errors.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr long long kNanosecondsPerSecond = 1'000'000'000LL;
// A thread that is later than this (the machine was asleep) starts a new rhythm instead of making up for it.
constexpr int kLatePeriods = 8;

long long Now() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

void SleepUntil(long long time) {
  timespec until{};
  until.tv_sec = time / kNanosecondsPerSecond;
  until.tv_nsec = time % kNanosecondsPerSecond;
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
  }
}

}  // namespace

NullDevice::NullDevice(double rateHz, unsigned channels, unsigned periodFrames)
    : rateHz_(rateHz),
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
  const int result = ::pthread_create(&thread_, nullptr, &NullDevice::ThreadBody_, this);
  if (result != 0) {
    throw TESKAudioError("The null audio device cannot start its thread: " +
                         std::generic_category().message(result) + ". Close other programs.");
  }
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
  long long start = Now();
  // Each wake-up is reckoned from the start, so that rounding never adds up to a drift.
  for (long long count = 1; shouldRun_; ++count) {
    const auto time = start + static_cast<long long>(period * static_cast<double>(count));
    SleepUntil(time);
    if (static_cast<double>(Now() - time) > period * kLatePeriods) {
      start = Now();
      count = 0;
    }
    callback_->Process(frames_.data(), periodFrames_);
  }
}

}  // namespace tesk_audio
