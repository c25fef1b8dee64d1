#pragma once

#include <pthread.h>

#include "exc/lock/scope_lock.h"

namespace tesk_audio {

// A condition whose wait ends after a time as well. Measured by the monotonic clock. Carries no state: what
// is waited for is a member of whoever owns the lock.
//
// Threads    ANY. Wake with the lock held or not.
class TimedCondition {
 public:
  TimedCondition();
  ~TimedCondition();
  TimedCondition(const TimedCondition&) = delete;
  TimedCondition& operator=(const TimedCondition&) = delete;

  // Gives the lock up meanwhile. May return early: test what you wait for.
  void Wait(exc::ScopeLock& lock);
  void WaitFor(exc::ScopeLock& lock, long long nanoseconds);
  void WakeAll();

 private:
  pthread_cond_t condition_;
};

}  // namespace tesk_audio
