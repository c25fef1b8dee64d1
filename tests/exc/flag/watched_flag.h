#pragma once

#include <atomic>

#include "exc/flag/ex_flag.h"

// Tells when a thread wants the flag's lock, and when one has begun to wait for the flag's cancellation: the
// flag lends its mutex for that alone.
class WatchedFlag : public exc::ExFlag {
 public:
  using exc::ExFlag::ExFlag;

  void Lock() override {
    ++lockAttempts_;
    exc::ExFlag::Lock();
  }
  pthread_mutex_t* get_mutex() override {
    ++waits_;
    return exc::ExFlag::get_mutex();
  }

  // How many waits have begun. Whoever holds the flag's lock after seeing one knows that it has given up the
  // lock.
  int Waits() const { return waits_; }
  int LockAttempts() const { return lockAttempts_; }

 private:
  std::atomic<int> lockAttempts_{0};
  std::atomic<int> waits_{0};
};
