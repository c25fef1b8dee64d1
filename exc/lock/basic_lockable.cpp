#include "exc/lock/basic_lockable.h"

// Unchecked: that the lock of GetLock() is this lock is known to us, not to the analysis.
namespace exc {

BasicLockable::~BasicLockable() = default;

void BasicLockable::Lock() EXC_UNCHECKED_LOCKING {
  GetLock()->Lock();
}

void BasicLockable::Unlock() EXC_UNCHECKED_LOCKING {
  GetLock()->Unlock();
}

bool BasicLockable::TryLock() EXC_UNCHECKED_LOCKING {
  return GetLock()->TryLock();
}

pthread_mutex_t* BasicLockable::get_mutex() {
  return GetLock()->get_mutex();
}

void BasicLockable::ForwardArgument(void* argument) {
  GetLock()->ForwardArgument(argument);
}

void BasicLockable::Forward() {
  GetLock()->Forward();
}

}  // namespace exc
