#include "reference_suite/audio/device/device_clock.h"

#include <cerrno>
#include <ctime>

#include "reference_suite/audio/output/monotonic_now.h"

namespace tesk_audio {

namespace {

constexpr long long kNanosecondsPerSecond = 1'000'000'000LL;

}  // namespace

void SleepUntil(long long time) {
  timespec until{};
  until.tv_sec = time / kNanosecondsPerSecond;
  until.tv_nsec = time % kNanosecondsPerSecond;
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
  }
}

void SleepFor(long long nanoseconds) {
  SleepUntil(MonotonicNow() + nanoseconds);
}

}  // namespace tesk_audio
