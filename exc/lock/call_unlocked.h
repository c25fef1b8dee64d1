#pragma once

#include <stdexcept>
#include <utility>

#include "exc/lock/scope_lock.h"

namespace exc {

// Calls `callable` with the lock of `lock` given up, and takes it again afterwards. Of a recursive lock one
// level is given up, so hold exactly one.
//
// Throws std::logic_error "Attempted to release a null lock." when `lock` holds none, and "Attempted to
// obtain a null lock." when there is none to return to. When `callable` throws, the lock is not taken again
// and `lock` holds nothing.
//
// Unchecked: to the caller the lock is held before and after; the analysis has no word for the gap. It does
// see the callable as a function of its own that holds nothing.
template <typename Callable>
void CallUnlocked(ScopeLock& lock, Callable&& callable) EXC_UNCHECKED_LOCKING {
  ScopeLockBase& scope = lock;
  if (scope.held_ == nullptr) throw std::logic_error("Attempted to release a null lock.");
  scope.held_->Unlock();
  scope.lent_ = std::exchange(scope.held_, nullptr);
  std::forward<Callable>(callable)();
  ExLock* back = std::exchange(scope.lent_, nullptr);
  if (back == nullptr) throw std::logic_error("Attempted to obtain a null lock.");
  scope.Acquire_(back);
}

}  // namespace exc
