#include "host/session/heard_clock.h"

#include <gtest/gtest.h>

namespace host_tests {
namespace {

using orbel::host::HeardClock;

TEST(HeardClock, KnowsNothingBeforeTheCountHasLeaptTwice) {
  HeardClock clock(1'000.0);
  EXPECT_FALSE(clock.WhenHeard(0));
  clock.Look(1.0, 0);
  clock.Look(1.1, 37);  // a period of 100 less a latency of 63: not known yet
  EXPECT_FALSE(clock.WhenHeard(0));
  clock.Look(1.2, 137);
  ASSERT_TRUE(clock.WhenHeard(500));
  EXPECT_DOUBLE_EQ(*clock.WhenHeard(37), 1.2);
  EXPECT_DOUBLE_EQ(*clock.WhenHeard(137), 1.3);
  EXPECT_NEAR(*clock.WhenHeard(500), 1.2 + 0.463, 1e-9);
}

TEST(HeardClock, ALateLookDoesNotCount) {
  HeardClock clock(1'000.0);
  clock.Look(1.000, 10);
  clock.Look(1.010, 20);
  clock.Look(1.027, 30);  // seven milliseconds late
  EXPECT_NEAR(*clock.WhenHeard(100), 1.010 + 0.090, 1e-9);
}

TEST(HeardClock, ADeviceThatWasHeldUpIsFollowed) {
  HeardClock clock(1'000.0);
  for (int i = 1; i <= 10; ++i) clock.Look(1.0 + 0.01 * i, 10 * i);
  // Held up for half a second.
  for (int i = 11; i <= 13; ++i) clock.Look(1.5 + 0.01 * i, 10 * i);
  EXPECT_NEAR(*clock.WhenHeard(200), 1.5 + 0.01 + 0.2, 1e-9);
}

}  // namespace
}  // namespace host_tests
