#pragma once

#include <pthread.h>

#include "exc/annotations.h"

namespace exc {

// What every lock can do. Everything that locks here (named locks, lockable objects, scoped locks) is used
// through this interface, so each may stand in for the other, also in a condition's wait.
//
// Threads    ANY; implementations say what happens when the holder locks again.
// Order      the order of the operations below is part of the binary contract: derived classes only add.
class EXC_LOCK_TYPE("lock") ExLock {
 public:
  ExLock() = default;
  ExLock(const ExLock&) = delete;
  ExLock& operator=(const ExLock&) = delete;

  // Waits until the lock is free and takes it.
  virtual void Lock() EXC_TAKES() = 0;
  virtual void Unlock() EXC_GIVES_UP() = 0;
  // Never waits. True when the lock was taken.
  virtual bool TryLock() EXC_TRIES(true) = 0;

  virtual ~ExLock();

  // The mutex behind the lock, for pthread_cond_wait. Never null; belongs to the lock.
  virtual pthread_mutex_t* get_mutex() = 0;

  // Two operations for the lock implementation's own use, handed through to it unchanged. Nothing here calls
  // them.
  virtual void ForwardArgument(void* argument) = 0;
  virtual void Forward();

  // The lock that does the work: this one, unless the class stands in for another lock.
  virtual ExLock* GetLock();
};

}  // namespace exc
