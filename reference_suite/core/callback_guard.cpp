#include "suite/core/callback_guard.h"

#include "exc/lock/scope_lock.h"

namespace notify {

CallbackGuard::CallbackGuard(exc::ExLock& lock, int& counter, exc::Condition& condition)
    : lock_(lock), counter_(counter), condition_(condition) {
  exc::ScopeLock scope(lock_);
  ++counter_;
}

CallbackGuard::~CallbackGuard() {
  bool isLast = false;
  {
    exc::ScopeLock scope(lock_);
    isLast = --counter_ == 0;
  }
  if (isLast) condition_.Broadcast(lock_);
}

}  // namespace notify
