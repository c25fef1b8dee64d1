#pragma once

#include <pthread.h>

#include "exc/lock/scope_lock.h"

namespace exc {

// A condition variable for any lock of the family. It carries no state of its own: what is waited for is a
// member of whoever owns the lock.
//
// Threads    ANY.
// Failure    results of the pthread calls are ignored: with a live object and a held lock none can fail.
class Condition {
 public:
  Condition();
  virtual ~Condition();
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  // Wakes one waiter, or all. Takes the lock for the call, so that a waiter cannot miss it between its test
  // and its wait.
  template <typename Lock>
  void Signal(Lock& lockable) {
    ScopeLock lock(lockable);
    SignalWhileLocked();
  }
  template <typename Lock>
  void Broadcast(Lock& lockable) {
    ScopeLock lock(lockable);
    pthread_cond_broadcast(&condition_);
  }

  // Wakes one waiter; the caller already holds the lock.
  virtual void SignalWhileLocked();

  // Waits for one signal with the lock of `lock` given up meanwhile (one level of a recursive one). May
  // return early: test what you wait for.
  template <typename HeldLock>
  void WaitWhileLocked(HeldLock& lock) {
    pthread_cond_wait(&condition_, lock.get_mutex());
  }

 private:
  pthread_cond_t condition_;
};

}  // namespace exc
