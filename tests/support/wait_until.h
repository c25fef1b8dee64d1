#pragma once

#include <chrono>
#include <thread>

namespace test_support {

// Polls until `condition` is true. Sleeps in between, so that what is waited for gets the machine; false when
// that takes longer than any test machine should need.
template <typename Condition>
bool WaitUntil(Condition condition, std::chrono::seconds limit = std::chrono::seconds(60)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return true;
}

}  // namespace test_support
