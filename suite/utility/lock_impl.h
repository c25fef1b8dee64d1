#pragma once

#include <pthread.h>

#include <string>

namespace exc {

// The mutex behind a named lock. Whoever supplies these two classes sees every lock of the engine with its
// name: tests link a pair of their own that checks the order in which locks nest.
//
// Threads    ANY. A waiter lends its priority to the holder (PTHREAD_PRIO_INHERIT).
// Failure    NOERRError with the operation, the lock's name and the system's text: a LockImpl_ that is locked
//            again by its holder, a lock given up by a thread that does not hold it.
class LockImpl_ {
 public:
  explicit LockImpl_(const std::string& name);
  virtual ~LockImpl_();
  LockImpl_(const LockImpl_&) = delete;
  LockImpl_& operator=(const LockImpl_&) = delete;

  virtual void Lock();
  virtual void Unlock();

  // Extensions that a lock hands through unchanged; ours has none.
  virtual void ForwardArgument(void* argument);
  virtual void Forward();

  // Never waits. True when the mutex was taken.
  bool TryLock();
  // For pthread_cond_wait; belongs to this object.
  pthread_mutex_t* get_mutex();

  const std::string& GetName() const { return name_; }

 protected:
  // `mutexType`: PTHREAD_MUTEX_RECURSIVE or another of the pthread types.
  LockImpl_(const std::string& name, int mutexType);

 private:
  std::string name_;
  pthread_mutex_t mutex_;
};

// The recursive one: its holder may lock again and gives up as often.
class RLockImpl_ : public LockImpl_ {
 public:
  explicit RLockImpl_(const std::string& name);
  ~RLockImpl_() override;
};

}  // namespace exc
