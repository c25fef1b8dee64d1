// expected-no-diagnostics
// Every way in which this code base uses its locks; the analysis must accept all of it.
#include <string>

#include "exc/condition/condition.h"
#include "exc/flag/ex_scope_flag.h"
#include "exc/lock/call_unlocked.h"
#include "exc/lock/lockable.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "exc/lock/scope_unlock.h"

class Counter : public exc::RLockable {
 public:
  Counter() : RLockable("Counter") {}

  int Next() {
    exc::ScopeLock lock(*this);
    Add_(1);
    return count_;
  }
  // Recursion across public operations.
  int NextButOne() {
    exc::ScopeLock lock(this);
    count_ = 0;
    return Next() + Next();
  }
  int Get() const {
    exc::ScopeLock lock(this);
    return count_;
  }
  void WaitForOne() {
    exc::ScopeLock lock(*this);
    while (count_ == 0) condition_.WaitWhileLocked(lock);
    --count_;
  }
  void GiveUpAndTakeAgain() {
    exc::ScopeLock lock(*this);
    ++count_;
    lock.Unlock();
    lock.Lock();
    ++count_;
  }
  void WithOpenLock() {
    exc::ScopeLock lock(*this);
    ++count_;
    exc::CallUnlocked(lock, [this] { Next(); });
    ++count_;
  }
  void WithScopedOpenLock() {
    exc::ScopeLock lock(*this);
    ++count_;
    { exc::ScopeUnlock open(*this); }
    ++count_;
  }
  void ByHand() {
    Lock();
    ++count_;
    Unlock();
  }
  void Tried() {
    if (!TryLock()) return;
    ++count_;
    Unlock();
  }

 private:
  void Add_(int n) EXC_HOLDS(this) { count_ += n; }

  int count_ EXC_GUARDED_BY(this) = 0;
  exc::Condition condition_;
};

class Named : public exc::Lockable {
 public:
  Named() : Lockable("Named") {}
  std::string Get() {
    exc::ScopeLock lock(*this);
    return name_;
  }

 private:
  std::string name_ EXC_GUARDED_BY(this);
};

int main() {
  Counter counter;
  Named named;
  return counter.Next() + static_cast<int>(named.Get().size());
}
