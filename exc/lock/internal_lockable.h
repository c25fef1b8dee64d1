#pragma once

#include <pthread.h>

#include "exc/annotations.h"

namespace exc::exc_internal {

// The plain mutex of the foundation itself, for what must work without the utility library and before and
// after everything else: the shared console stream. It is ready before the first constructor of the program
// runs, and is never torn down, because threads that outlive the static objects still write.
//
// Threads    ANY. Not recursive.
class EXC_LOCK_TYPE("internal lock") internal_lockable {
 public:
  constexpr internal_lockable() = default;
  virtual ~internal_lockable() = default;
  internal_lockable(const internal_lockable&) = delete;
  internal_lockable& operator=(const internal_lockable&) = delete;

  virtual void lock() EXC_TAKES();
  virtual void unlock() EXC_GIVES_UP();

  // Holds the mutex while it lives. Ends the program when giving it up throws.
  class EXC_SCOPE_TYPE internal_scope_lock {
   public:
    explicit internal_scope_lock(internal_lockable* lockable) EXC_TAKES(lockable);
    virtual ~internal_scope_lock() EXC_GIVES_UP();
    internal_scope_lock(const internal_scope_lock&) = delete;
    internal_scope_lock& operator=(const internal_scope_lock&) = delete;

   private:
    internal_lockable* lockable_;
  };

 private:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

}  // namespace exc::exc_internal
