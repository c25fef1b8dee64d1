#include "reference_suite/audio/output/timed_condition.h"

#include <ctime>

#include "reference_suite/audio/output/monotonic_now.h"

namespace tesk_audio {

namespace {

constexpr long long kNanosecondsPerSecond = 1'000'000'000LL;

}  // namespace

TimedCondition::TimedCondition() {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&condition_, &attributes);
  pthread_condattr_destroy(&attributes);
}

TimedCondition::~TimedCondition() {
  pthread_cond_destroy(&condition_);
}

void TimedCondition::Wait(exc::ScopeLock& lock) {
  pthread_cond_wait(&condition_, lock.get_mutex());
}

void TimedCondition::WaitFor(exc::ScopeLock& lock, long long nanoseconds) {
  const long long end = MonotonicNow() + nanoseconds;
  timespec until{};
  until.tv_sec = end / kNanosecondsPerSecond;
  until.tv_nsec = end % kNanosecondsPerSecond;
  pthread_cond_timedwait(&condition_, lock.get_mutex(), &until);
}

void TimedCondition::WakeAll() {
  pthread_cond_broadcast(&condition_);
}

}  // namespace tesk_audio
