// The pair of lock implementations that a program links in place of the utility library's.
#include "tests/support/observed_locks.h"

#include <cerrno>

#include "exc/result/noerr_error.h"
#include "exc/result/require_zero.h"
#include "suite/utility/lock_impl.h"

namespace observed_locks = test_support::observed_locks;

namespace exc {

namespace {

void Require(int result, const std::string& lock) {
  if (result != 0) RequireZero<int, NOERRError>(result, "lock \"" + lock + "\"");
}

}  // namespace

LockImpl_::LockImpl_(const std::string& name) : LockImpl_(name, PTHREAD_MUTEX_ERRORCHECK) {}

LockImpl_::LockImpl_(const std::string& name, int mutexType) : name_(name) {
  pthread_mutexattr_t attributes;
  Require(pthread_mutexattr_init(&attributes), name_);
  Require(pthread_mutexattr_settype(&attributes, mutexType), name_);
  Require(pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT), name_);
  Require(pthread_mutex_init(&mutex_, &attributes), name_);
  pthread_mutexattr_destroy(&attributes);
  observed_locks::Made(name_);
}

LockImpl_::~LockImpl_() {
  pthread_mutex_destroy(&mutex_);
}

void LockImpl_::Lock() {
  Require(pthread_mutex_lock(&mutex_), name_);
  observed_locks::Taken(name_, &mutex_);
}

void LockImpl_::Unlock() {
  observed_locks::GivenUp(name_, &mutex_);
  Require(pthread_mutex_unlock(&mutex_), name_);
}

bool LockImpl_::TryLock() {
  const int result = pthread_mutex_trylock(&mutex_);
  if (result == EBUSY || result == EDEADLK) return false;
  Require(result, name_);
  observed_locks::Taken(name_, &mutex_);
  return true;
}

pthread_mutex_t* LockImpl_::get_mutex() {
  return &mutex_;
}

void LockImpl_::ForwardArgument(void* /*argument*/) {}

void LockImpl_::Forward() {}

RLockImpl_::RLockImpl_(const std::string& name) : LockImpl_(name, PTHREAD_MUTEX_RECURSIVE) {}

RLockImpl_::~RLockImpl_() = default;

}  // namespace exc
