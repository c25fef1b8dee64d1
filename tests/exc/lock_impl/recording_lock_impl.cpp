// The pair of lock implementations that this program links in place of the utility library's.
#include "tests/exc/lock_impl/recording_lock_impl.h"

#include "suite/utility/lock_impl.h"

namespace {

void Record(const exc::LockImpl_& lock, const std::string& operation) {
  LockImplCalls().push_back(lock.GetName() + ": " + operation);
}

}  // namespace

std::vector<std::string>& LockImplCalls() {
  static std::vector<std::string> calls;
  return calls;
}

bool& TryLockAnswer() {
  static bool answer = true;
  return answer;
}

namespace exc {

LockImpl_::LockImpl_(const std::string& name) : LockImpl_(name, PTHREAD_MUTEX_NORMAL) {
  Record(*this, "made plain");
}
LockImpl_::LockImpl_(const std::string& name, int /*mutexType*/) : name_(name), mutex_{} {}
LockImpl_::~LockImpl_() {
  Record(*this, "destroyed");
}
void LockImpl_::Lock() {
  Record(*this, "Lock");
}
void LockImpl_::Unlock() {
  Record(*this, "Unlock");
}
bool LockImpl_::TryLock() {
  Record(*this, "TryLock");
  return TryLockAnswer();
}
pthread_mutex_t* LockImpl_::get_mutex() {
  Record(*this, "get_mutex");
  return &mutex_;
}
void LockImpl_::ForwardArgument(void* argument) {
  Record(*this, "ForwardArgument " + *static_cast<std::string*>(argument));
}
void LockImpl_::Forward() {
  Record(*this, "Forward");
}

RLockImpl_::RLockImpl_(const std::string& name) : LockImpl_(name, PTHREAD_MUTEX_RECURSIVE) {
  Record(*this, "made recursive");
}
RLockImpl_::~RLockImpl_() {
  Record(*this, "destroyed as recursive");
}

}  // namespace exc
