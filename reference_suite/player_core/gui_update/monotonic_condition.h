#pragma once

#include <pthread.h>

#include "exc/lock/ex_lock.h"

namespace gui {

// Nanoseconds of a clock that nobody sets.
long long GetMonotonicNanoseconds();

// A condition variable whose waits can end at a time of that clock: a stage clock that is set in the middle
// of a show must neither hold updates back nor let them run wild. Threads: ANY.
class MonotonicCondition {
 public:
  MonotonicCondition();
  ~MonotonicCondition();
  MonotonicCondition(const MonotonicCondition&) = delete;
  MonotonicCondition& operator=(const MonotonicCondition&) = delete;

  // Wakes every waiter. The caller holds the lock.
  void Wake();
  // Both give up one level of `lock`, which the caller holds, and may return early.
  void Wait(exc::ExLock& lock);
  void WaitUntil(exc::ExLock& lock, long long nanoseconds);

 private:
  pthread_cond_t condition_;
};

}  // namespace gui
