#pragma once

#include <chrono>
#include <thread>

namespace test_support {

// Polls until `condition` is true. False when that takes longer than any test machine should need.
template <typename Condition>
bool WaitUntil(Condition condition, std::chrono::seconds limit = std::chrono::seconds(60)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace test_support
