#pragma once

#include "exc/lock/ex_lock.h"

namespace exc {

// An object that is a lock by standing in for one that it holds: every operation goes to GetLock().
class BasicLockable : public ExLock {
 public:
  ~BasicLockable() override;

  void Lock() EXC_TAKES() override;
  void Unlock() EXC_GIVES_UP() override;
  bool TryLock() EXC_TRIES(true) override;
  pthread_mutex_t* get_mutex() override;
  void ForwardArgument(void* argument) override;
  void Forward() override;

  // Never null. Every call gives the same lock: it is asked again for each of the operations above.
  ExLock* GetLock() override = 0;
};

}  // namespace exc
