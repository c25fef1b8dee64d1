#include "reference_suite/player_core/gui_update/monotonic_condition.h"

#include <gtest/gtest.h>

#include <chrono>

#include "exc/lock/lockable.h"
#include "exc/lock/scope_lock.h"

namespace {

long long SteadyNanoseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

TEST(MonotonicCondition, ItsClockIsTheSteadyOne) {
  const long long before = SteadyNanoseconds();
  const long long now = gui::GetMonotonicNanoseconds();
  EXPECT_LE(before, now);
  EXPECT_LE(now, SteadyNanoseconds());
}

// Of a few waits, because one may return early.
TEST(MonotonicCondition, AWaitEndsAtItsTimeAndNotBefore) {
  exc::Lockable place("MonotonicConditionTest");
  gui::MonotonicCondition condition;
  int waitsToTheEnd = 0;
  for (int wait = 0; wait < 4; ++wait) {
    exc::ScopeLock lock(place);
    const long long end = gui::GetMonotonicNanoseconds() + 3'000'000;
    condition.WaitUntil(lock, end);
    if (gui::GetMonotonicNanoseconds() >= end) ++waitsToTheEnd;
  }
  EXPECT_GE(waitsToTheEnd, 3);
}

}  // namespace
