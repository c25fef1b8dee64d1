#pragma once

#include "exc/lock/ex_lock.h"

namespace exc {

// Gives a lock up while it lives and takes it again at the end. Of a recursive lock it gives up one level.
//
// Threads    belongs to the thread that holds the lock.
class EXC_SCOPE_TYPE ScopeUnlock {
 public:
  explicit ScopeUnlock(ExLock& lock) EXC_GIVES_UP(lock);
  // Ends the program when taking the lock throws.
  virtual ~ScopeUnlock() EXC_GIVES_UP();

  ScopeUnlock(const ScopeUnlock&) = delete;
  ScopeUnlock& operator=(const ScopeUnlock&) = delete;

 private:
  ExLock* lock_;
};

}  // namespace exc
