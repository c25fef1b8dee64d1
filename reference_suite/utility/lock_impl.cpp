// Alone in this file, so that a program can link a pair of these classes of its own.
#include "suite/utility/lock_impl.h"

#include <cerrno>

#include "exc/result/require_zero.h"
#include "suite/utility/format.h"

namespace exc {

namespace {

// The text is made on failure only: locks are taken on the render path, where nothing may allocate.
void RequireSuccess(int result, const char* operation, const std::string& name) {
  if (result == 0) return;
  RequireZero<int, NOERRError>(result, format("%s of lock \"%s\"", operation, name.c_str()));
}

class MutexAttributes {
 public:
  MutexAttributes(int mutexType, const std::string& name) {
    RequireSuccess(pthread_mutexattr_init(&attributes_), "pthread_mutexattr_init", name);
    RequireSuccess(pthread_mutexattr_settype(&attributes_, mutexType), "pthread_mutexattr_settype", name);
    // A render thread that waits for a lock lends its priority to the holder.
    RequireSuccess(pthread_mutexattr_setprotocol(&attributes_, PTHREAD_PRIO_INHERIT),
                   "pthread_mutexattr_setprotocol", name);
  }
  ~MutexAttributes() { pthread_mutexattr_destroy(&attributes_); }
  MutexAttributes(const MutexAttributes&) = delete;
  MutexAttributes& operator=(const MutexAttributes&) = delete;

  const pthread_mutexattr_t* Get() const { return &attributes_; }

 private:
  pthread_mutexattr_t attributes_;
};

}  // namespace

// A holder that locks again gets an error instead of waiting for itself for ever.
LockImpl_::LockImpl_(const std::string& name) : LockImpl_(name, PTHREAD_MUTEX_ERRORCHECK) {}

LockImpl_::LockImpl_(const std::string& name, int mutexType) : name_(name) {
  const MutexAttributes attributes(mutexType, name_);
  RequireSuccess(pthread_mutex_init(&mutex_, attributes.Get()), "pthread_mutex_init", name_);
}

LockImpl_::~LockImpl_() {
  pthread_mutex_destroy(&mutex_);
}

void LockImpl_::Lock() {
  RequireSuccess(pthread_mutex_lock(&mutex_), "pthread_mutex_lock", name_);
}

void LockImpl_::Unlock() {
  RequireSuccess(pthread_mutex_unlock(&mutex_), "pthread_mutex_unlock", name_);
}

bool LockImpl_::TryLock() {
  const int result = pthread_mutex_trylock(&mutex_);
  // EDEADLK: this thread has it already, which is one more way of not being free.
  if (result == EBUSY || result == EDEADLK) return false;
  RequireSuccess(result, "pthread_mutex_trylock", name_);
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
