#pragma once

#include <pthread.h>

#include <atomic>
#include <functional>

// Counts the calls that exc makes to the system's condition variables. The linker leads them here first
// (--wrap in CMakeLists.txt); they go on to the system unless `result` says otherwise.
struct ConditionCalls {
  std::atomic<int> inits{0};
  std::atomic<int> initsWithAttributes{0};
  std::atomic<int> destroys{0};
  std::atomic<int> waits{0};
  std::atomic<int> signals{0};
  std::atomic<int> broadcasts{0};

  // Not 0: the calls do nothing and return it. They are not made then.
  std::atomic<int> result{0};
  // Called on the calling thread before a signal or broadcast. Set it while no other thread runs.
  std::function<void()> beforeWaking;

  void Reset();
};

ConditionCalls& TheConditionCalls();
