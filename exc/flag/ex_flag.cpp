#include "exc/flag/ex_flag.h"

namespace exc {

ExFlag::ExFlag(const std::string& name) : RLockable(name) {}

ExFlag::~ExFlag() = default;

void ExFlag::Set() {
  ScopeLock lock(*this);
  isSet_ = true;
  setter_ = pthread_self();
}

void ExFlag::Set(const std::string& reason) {
  ScopeLock lock(*this);
  isSet_ = true;
  setter_ = pthread_self();
  reason_ = reason;
}

void ExFlag::Cancel() {
  ScopeLock lock(*this);
  isSet_ = false;
  reason_.clear();
  condition_.SignalWhileLocked();
}

void ExFlag::WaitForCancel() {
  ScopeLock lock(*this);
  if (!isSet_ || setter_ == pthread_self()) return;
  // One wait, no loop: a flag that is set again before this thread runs must not hold it a second time.
  condition_.WaitWhileLocked(lock);
}

bool ExFlag::GetIsSet() const {
  ScopeLock lock(this);
  return isSet_;
}

std::string ExFlag::GetString() const {
  ScopeLock lock(this);
  return reason_;
}

}  // namespace exc
