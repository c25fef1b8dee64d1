#include "tests/reference_suite/player_core/support/lock_record.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <stdexcept>

#include "suite/utility/lock_impl.h"

namespace test_support::locks {

namespace {

std::mutex mutex;
std::set<std::pair<std::string, std::string>> nestings;
thread_local std::vector<std::string> held;

void Taken(const std::string& name) {
  if (std::find(held.begin(), held.end(), name) == held.end()) {
    const std::lock_guard guard(mutex);
    for (const std::string& outer : held) nestings.emplace(outer, name);
  }
  held.push_back(name);
}

void GivenUp(const std::string& name) {
  const auto last = std::find(held.rbegin(), held.rend(), name);
  if (last != held.rend()) held.erase(std::next(last).base());
}

}  // namespace

std::vector<std::string> GetHeld() {
  return held;
}

std::set<std::pair<std::string, std::string>> GetNestings() {
  const std::lock_guard guard(mutex);
  return nestings;
}

void Forget() {
  const std::lock_guard guard(mutex);
  nestings.clear();
}

}  // namespace test_support::locks

namespace exc {

LockImpl_::LockImpl_(const std::string& name) : LockImpl_(name, PTHREAD_MUTEX_ERRORCHECK) {}

LockImpl_::LockImpl_(const std::string& name, int mutexType) : name_(name) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, mutexType);
  pthread_mutex_init(&mutex_, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

LockImpl_::~LockImpl_() {
  pthread_mutex_destroy(&mutex_);
}

void LockImpl_::Lock() {
  if (pthread_mutex_lock(&mutex_) == EDEADLK) throw std::logic_error("Locked twice: " + name_);
  test_support::locks::Taken(name_);
}

void LockImpl_::Unlock() {
  test_support::locks::GivenUp(name_);
  pthread_mutex_unlock(&mutex_);
}

bool LockImpl_::TryLock() {
  if (pthread_mutex_trylock(&mutex_) != 0) return false;
  test_support::locks::Taken(name_);
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
