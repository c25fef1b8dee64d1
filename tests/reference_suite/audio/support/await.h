#pragma once

#include <chrono>
#include <thread>

// Looks again and again until `condition` is true. Sleeps in between, so that what is waited for gets the
// machine; false when even a very busy one should have come to it.
template <typename Condition>
bool Await(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(4);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}
