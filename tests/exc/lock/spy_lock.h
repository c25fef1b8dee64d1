#pragma once

#include <pthread.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "exc/lock/ex_lock.h"

// A lock that locks nothing and writes down what is asked of it.
class SpyLock : public exc::ExLock {
 public:
  void Lock() override {
    calls.push_back("Lock");
    if (failLock) throw std::runtime_error("SpyLock cannot be taken");
    ++depth;
  }
  void Unlock() override {
    calls.push_back("Unlock");
    if (failUnlock) throw std::runtime_error("SpyLock cannot be given up");
    --depth;
  }
  bool TryLock() override {
    calls.push_back("TryLock");
    if (tryLockResult) ++depth;
    return tryLockResult;
  }
  pthread_mutex_t* get_mutex() override {
    calls.push_back("get_mutex");
    return &mutex;
  }
  void ForwardArgument(void* argument) override {
    calls.push_back("ForwardArgument");
    lastArgument = argument;
  }
  void Forward() override { calls.push_back("Forward"); }

  std::vector<std::string> calls;
  int depth = 0;  // how often it is held
  bool failLock = false;
  bool failUnlock = false;
  bool tryLockResult = true;
  void* lastArgument = nullptr;
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

using Calls = std::vector<std::string>;
