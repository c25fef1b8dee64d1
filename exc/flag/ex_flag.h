#pragma once

#include <string>

#include "exc/condition/condition.h"
#include "exc/lock/rlockable.h"
#include "exc/thread/ex_thread_id.h"

namespace exc {

// A boolean with a reason that other threads can wait on until it is cancelled. It hands work from one thread
// to another: the one that has set it is at work, the others wait for its Cancel().
//
// Threads    ANY. The thread that set the flag last never waits for it.
// Locks      its own, recursive; every operation takes it.
class ExFlag : public RLockable {
 public:
  // `name` names the lock.
  explicit ExFlag(const std::string& name);
  ~ExFlag() override;

  // Neither wakes a waiter. Without a reason the one from before stays.
  virtual void Set();
  virtual void Set(const std::string& reason);
  // Clears the flag and its reason and wakes one waiter.
  virtual void Cancel();

  // Returns at once when the flag is not set or was set by this thread. Otherwise waits for one signal and
  // returns, without looking at the flag again: a flag that is set anew before the waiter runs does not hold
  // it.
  virtual void WaitForCancel();

  virtual bool GetIsSet() const;
  // The reason; empty when there is none.
  virtual std::string GetString() const;

 private:
  bool isSet_ EXC_GUARDED_BY(this) = false;
  std::string reason_ EXC_GUARDED_BY(this);
  Condition condition_;
  ExThreadId setter_ EXC_GUARDED_BY(this);
};

}  // namespace exc
