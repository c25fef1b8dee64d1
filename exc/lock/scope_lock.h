#pragma once

#include "exc/lock/ex_lock.h"

namespace exc {

class ScopeLock;

// What a scoped lock can do after construction: give the lock up early, take it again, lend its mutex to a
// condition. It is itself an ExLock, so it can be handed to whoever may have to give the lock up for a while.
//
// Threads    belongs to the thread that made it.
class ScopeLockBase : public ExLock {
 public:
  // Gives up what is still held. Ends the program when that throws.
  ~ScopeLockBase() override;

  // Takes the lock again that Unlock() gave up; once per Unlock().
  // Throws std::logic_error "ScopeLock has not been unlocked." otherwise.
  void Lock() EXC_TAKES() override;
  // Gives the lock up before the end of the scope; nothing when none is held.
  void Unlock() EXC_GIVES_UP() override;
  // Like Lock(), without waiting. False: the lock stays given up.
  bool TryLock() EXC_TRIES(true) override;
  // Throws std::logic_error "ScopeLock has already been released" when no lock is held, as does
  // ForwardArgument.
  pthread_mutex_t* get_mutex() override;
  void ForwardArgument(void* argument) override;

  // Takes the held lock (once more) and returns it: the step of Lock() that waits. No accessor, unlike in the
  // rest of the family. Throws like get_mutex().
  ExLock* GetLock() override;

 protected:
  ScopeLockBase() = default;

  // Remembers `lock` as held and takes it. When that throws, nothing is held.
  void Acquire_(ExLock* lock);

  ExLock* held_ = nullptr;
  ExLock* lent_ = nullptr;     // the held lock while a callable runs unlocked
  ExLock* givenUp_ = nullptr;  // by Unlock()
  bool keepsLock_ = false;     // destruction does not give the lock up

 private:
  ExLock* RequireHeld_() const;
  void RequireGivenUp_() const;

  template <typename Callable>
  friend void CallUnlocked(ScopeLock& lock, Callable&& callable);
};

// Holds a lock while it lives:
//
//   exc::ScopeLock lock(*this);
//
// The lock must not be null and outlives the scope.
class EXC_SCOPE_TYPE ScopeLock : public ScopeLockBase {
 public:
  explicit ScopeLock(ExLock* lock) EXC_TAKES(lock);
  explicit ScopeLock(ExLock& lock) EXC_TAKES(lock);
  // For queries: taking the lock does not change the object that is the lock.
  explicit ScopeLock(const ExLock* lock) EXC_TAKES(lock);
  ~ScopeLock() EXC_GIVES_UP() override;
};

}  // namespace exc
