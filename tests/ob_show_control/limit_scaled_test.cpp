#include "Sources/ob_show_control/limit_scaled.h"

#include <gtest/gtest.h>

#include <random>

namespace {

tesk_audio::SampleCount Shortened(long long from, long long to, long double scale) {
  tesk_audio::SampleCount count(from, scale);
  SetUnscaledAndLimitScaled(to, &count);
  return count;
}

TEST(LimitScaled, AtScale1TheCountIsTakenAsItIs) {
  EXPECT_EQ(Shortened(1000, 240, 1.0L).GetUnscaled(), 240);
  EXPECT_EQ(Shortened(1000, 240, 1.0L).GetScaled(), 240);
  EXPECT_EQ(Shortened(1000, 0, 1.0L).GetUnscaled(), 0);
}

TEST(LimitScaled, ASmallerCountHasASmallerScaledView) {
  EXPECT_EQ(Shortened(1000, 240, 1.5L).GetUnscaled(), 240);
  EXPECT_EQ(Shortened(1000, 240, 1.5L).GetScaled(), 160);
  EXPECT_EQ(Shortened(1000, 240, 1.5L).GetScale(), 1.5L);
}

TEST(LimitScaled, AScaledViewThatWouldGrowIsHeld) {
  // 100 unscaled are 66.7, which is 67; 105 would be 70.
  const auto count = Shortened(100, 105, 1.5L);
  EXPECT_EQ(count.GetScaled(), 67);
  EXPECT_EQ(count.GetUnscaled(), 101) << "67 * 1.5 is 100.5";
}

TEST(LimitScaled, AnEqualScaledViewStays) {
  const auto count = Shortened(101, 100, 1.5L);  // both are 67 scaled
  EXPECT_EQ(count.GetScaled(), 67);
  EXPECT_EQ(count.GetUnscaled(), 100);
}

TEST(LimitScaled, HoldingAViewOf0LeavesNothing) {
  tesk_audio::SampleCount count(0, 0.25L);
  SetUnscaledAndLimitScaled(1, &count);  // would be 4 scaled
  EXPECT_EQ(count.GetScaled(), 0);
  EXPECT_EQ(count.GetUnscaled(), 0);
}

TEST(LimitScaled, WhateverTheScaleAShorteningNeverGrowsTheScaledView) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 20'000; ++i) {
    const long long from = std::uniform_int_distribution<long long>(1, 100'000)(random);
    const long long to = std::uniform_int_distribution<long long>(0, from)(random);
    const long double scale = std::uniform_real_distribution<double>(0.25, 4.0)(random);
    const auto count = Shortened(from, to, scale);
    ASSERT_LE(count.GetScaled(), tesk_audio::SampleCount(from, scale).GetScaled());
    ASSERT_EQ(count.GetUnscaled(), to);
  }
}

}  // namespace
