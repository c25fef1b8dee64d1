#include "exc/lock/internal_lockable.h"

// Unchecked: a pthread mutex is no lock to the analysis, and it does not follow the pointer of the scoped
// lock.
namespace exc::exc_internal {

void internal_lockable::lock() EXC_UNCHECKED_LOCKING {
  pthread_mutex_lock(&mutex_);
}

void internal_lockable::unlock() EXC_UNCHECKED_LOCKING {
  pthread_mutex_unlock(&mutex_);
}

internal_lockable::internal_scope_lock::internal_scope_lock(internal_lockable* lockable) EXC_UNCHECKED_LOCKING
    : lockable_(lockable) {
  lockable_->lock();
}

internal_lockable::internal_scope_lock::~internal_scope_lock() EXC_UNCHECKED_LOCKING {
  lockable_->unlock();
}

}  // namespace exc::exc_internal
