#pragma once

#include "exc/condition/condition.h"
#include "exc/lock/ex_lock.h"

namespace notify {

// Counts a notification as in flight while it lives. Takes `lock` in the constructor and in the destructor
// for the counting alone, never in between; the last one out broadcasts `condition`.
class CallbackGuard {
 public:
  CallbackGuard(exc::ExLock& lock, int& counter, exc::Condition& condition);
  ~CallbackGuard();
  CallbackGuard(const CallbackGuard&) = delete;
  CallbackGuard& operator=(const CallbackGuard&) = delete;

 private:
  exc::ExLock& lock_;
  int& counter_;
  exc::Condition& condition_;
};

}  // namespace notify
