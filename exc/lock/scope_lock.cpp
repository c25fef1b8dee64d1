#include "exc/lock/scope_lock.h"

#include <stdexcept>
#include <utility>

// Unchecked: which lock is held is a value of this object at run time.
namespace exc {

ScopeLockBase::~ScopeLockBase() EXC_UNCHECKED_LOCKING {
  if (!keepsLock_) Unlock();
}

void ScopeLockBase::Lock() EXC_UNCHECKED_LOCKING {
  RequireGivenUp_();
  held_ = std::exchange(givenUp_, nullptr);
  GetLock();
}

void ScopeLockBase::Unlock() EXC_UNCHECKED_LOCKING {
  if (held_ == nullptr) return;
  held_->Unlock();
  givenUp_ = std::exchange(held_, nullptr);
}

bool ScopeLockBase::TryLock() EXC_UNCHECKED_LOCKING {
  RequireGivenUp_();
  held_ = std::exchange(givenUp_, nullptr);
  const bool taken = held_->TryLock();
  if (!taken) givenUp_ = std::exchange(held_, nullptr);
  return taken;
}

pthread_mutex_t* ScopeLockBase::get_mutex() {
  return RequireHeld_()->get_mutex();
}

void ScopeLockBase::ForwardArgument(void* argument) {
  RequireHeld_()->ForwardArgument(argument);
}

ExLock* ScopeLockBase::GetLock() {
  ExLock* lock = RequireHeld_();
  Acquire_(lock);
  return lock;
}

void ScopeLockBase::Acquire_(ExLock* lock) EXC_UNCHECKED_LOCKING {
  held_ = nullptr;  // A lock that could not be taken must not be given up by the destructor.
  lock->Lock();
  held_ = lock;
}

ExLock* ScopeLockBase::RequireHeld_() const {
  if (held_ == nullptr) throw std::logic_error("ScopeLock has already been released");
  return held_;
}

void ScopeLockBase::RequireGivenUp_() const {
  if (givenUp_ == nullptr || held_ != nullptr) throw std::logic_error("ScopeLock has not been unlocked.");
}

ScopeLock::ScopeLock(ExLock* lock) EXC_UNCHECKED_LOCKING {
  Acquire_(lock);
}

ScopeLock::ScopeLock(ExLock& lock) EXC_UNCHECKED_LOCKING {
  Acquire_(&lock);
}

ScopeLock::ScopeLock(const ExLock* lock) EXC_UNCHECKED_LOCKING {
  Acquire_(const_cast<ExLock*>(lock));
}

ScopeLock::~ScopeLock() EXC_UNCHECKED_LOCKING = default;

}  // namespace exc
