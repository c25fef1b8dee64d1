#include "tests/fakes/journaling_locks.h"

#include <map>
#include <optional>
#include <stdexcept>

#include "suite/utility/lock_impl.h"
#include "tests/fakes/journal.h"

namespace {

// By name, while this thread is watched.
thread_local std::optional<std::map<std::string, int>> levels;

void NoteTaken(const std::string& name) {
  if (levels && ++(*levels)[name] == 1) fakes::Write("+" + name);
}

void NoteGivenUp(const std::string& name) {
  if (levels && --(*levels)[name] == 0) fakes::Write("-" + name);
}

void InitialiseMutex(pthread_mutex_t* mutex, int type) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, type);
  pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

}  // namespace

namespace fakes::locks {

Journaling::Journaling() {
  levels.emplace();
}

Journaling::~Journaling() {
  levels.reset();
}

}  // namespace fakes::locks

namespace exc {

LockImpl_::LockImpl_(const std::string& name) : LockImpl_(name, PTHREAD_MUTEX_ERRORCHECK) {}
LockImpl_::LockImpl_(const std::string& name, int mutexType) : name_(name) {
  InitialiseMutex(&mutex_, mutexType);
}
LockImpl_::~LockImpl_() {
  pthread_mutex_destroy(&mutex_);
}

void LockImpl_::Lock() {
  if (pthread_mutex_lock(&mutex_) != 0) throw std::logic_error(name_ + " cannot be taken");
  NoteTaken(name_);
}
void LockImpl_::Unlock() {
  if (pthread_mutex_unlock(&mutex_) != 0) throw std::logic_error(name_ + " is not held");
  NoteGivenUp(name_);
}
bool LockImpl_::TryLock() {
  if (pthread_mutex_trylock(&mutex_) != 0) return false;
  NoteTaken(name_);
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
