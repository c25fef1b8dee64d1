#pragma once

namespace test_support {

// Counts what this thread takes, tries to take or waits for while it lives: mutexes, read-write locks, spin
// locks, semaphores and conditions of the system. The program must link lock_watch.cpp and libdl. Watches
// nest; each counts from its own beginning.
class LockWatch {
 public:
  LockWatch();
  ~LockWatch();
  LockWatch(const LockWatch&) = delete;
  LockWatch& operator=(const LockWatch&) = delete;

  // On the thread that made it.
  int Count() const;

 private:
  int before_;
};

}  // namespace test_support
