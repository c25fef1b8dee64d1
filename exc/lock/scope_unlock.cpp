#include "exc/lock/scope_unlock.h"

// Unchecked: the member is the lock that the constructor was given, which the analysis does not follow.
namespace exc {

ScopeUnlock::ScopeUnlock(ExLock& lock) EXC_UNCHECKED_LOCKING : lock_(&lock) {
  lock_->Unlock();
}

ScopeUnlock::~ScopeUnlock() EXC_UNCHECKED_LOCKING {
  lock_->Lock();
}

}  // namespace exc
