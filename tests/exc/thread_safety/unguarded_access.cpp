// One misuse per operation; the analysis must report every one of them. Each reads or writes another member,
// so that the report says which.
#include "exc/lock/call_unlocked.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "exc/lock/scope_unlock.h"

class Careless : public exc::RLockable {
 public:
  Careless() : RLockable("Careless") {}

  int WithoutLock() {
    return withoutLock_;  // expected-error {{reading variable 'withoutLock_' requires holding mutex 'this'}}
  }
  void PrivateOperationWithoutLock() {
    CallerHolds_();  // expected-error {{calling function 'CallerHolds_' requires holding mutex 'this'}}
  }
  void AfterUnlock() {
    exc::ScopeLock lock(*this);
    lock.Unlock();
    ++afterUnlock_;  // expected-error {{writing variable 'afterUnlock_' requires holding mutex 'this'}}
  }
  void InsideCallUnlocked() {
    exc::ScopeLock lock(*this);
    exc::CallUnlocked(lock, [this] {
      ++insideCall_;  // expected-error {{writing variable 'insideCall_' requires holding mutex 'this'}}
    });
  }
  void InsideScopeUnlock() {
    exc::ScopeLock lock(*this);
    exc::ScopeUnlock open(*this);
    ++insideOpen_;  // expected-error {{writing variable 'insideOpen_' requires holding mutex 'this'}}
  }
  void NeverGivenUp() {
    Lock();  // expected-note {{mutex acquired here}}
  }          // expected-error {{mutex 'this' is still held at the end of function}}

 private:
  void CallerHolds_() EXC_HOLDS(this) {}

  int withoutLock_ EXC_GUARDED_BY(this) = 0;
  int afterUnlock_ EXC_GUARDED_BY(this) = 0;
  int insideCall_ EXC_GUARDED_BY(this) = 0;
  int insideOpen_ EXC_GUARDED_BY(this) = 0;
};
