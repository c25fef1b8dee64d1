#include "reference_suite/player_core/gui_update/monotonic_condition.h"

#include <time.h>

namespace gui {

namespace {
constexpr long long kNanosecondsPerSecond = 1'000'000'000;
}

long long GetMonotonicNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

MonotonicCondition::MonotonicCondition() {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&condition_, &attributes);
  pthread_condattr_destroy(&attributes);
}

MonotonicCondition::~MonotonicCondition() {
  pthread_cond_destroy(&condition_);
}

void MonotonicCondition::Wake() {
  pthread_cond_broadcast(&condition_);
}

void MonotonicCondition::Wait(exc::ExLock& lock) {
  pthread_cond_wait(&condition_, lock.get_mutex());
}

void MonotonicCondition::WaitUntil(exc::ExLock& lock, long long nanoseconds) {
  timespec deadline{};
  deadline.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
  deadline.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
  pthread_cond_timedwait(&condition_, lock.get_mutex(), &deadline);
}

}  // namespace gui
