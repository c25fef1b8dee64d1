#include "suite/audio/sample_count.h"

#include <gtest/gtest.h>

namespace {

using tesk_audio::SampleCount;

TEST(SampleCount, RoundsHalvesAwayFromZeroInBothViews) {
  SampleCount count(3, 2.0L);
  EXPECT_EQ(count.GetScaled(), 2) << "1.5";
  count.SetUnscaled(-3);
  EXPECT_EQ(count.GetScaled(), -2);
  count = SampleCount(0, 0.5L);
  count.SetScaled(5);
  EXPECT_EQ(count.GetUnscaled(), 3) << "2.5";
  count.SetScaled(-5);
  EXPECT_EQ(count.GetUnscaled(), -3);
}

TEST(SampleCount, UnscaledCountsOf63BitsAreExact) {
  SampleCount count(0, 1.5L);
  count.SetUnscaled(9'223'372'036'854'775'807);
  EXPECT_EQ(count.GetUnscaled(), 9'223'372'036'854'775'807);
}

TEST(SampleCount, AScaledCountKeepsItsFractionOfAnUnscaledSample) {
  SampleCount count(0, 1.1L);
  count.SetScaled(1);  // 1.1 unscaled
  EXPECT_EQ(count.GetUnscaled(), 1);
  EXPECT_EQ(count.GetScaled(), 1);
}

TEST(SampleCount, LessThanHalfAnUnscaledSampleIsExactly0) {
  SampleCount count(0, 0.25L);
  count.SetScaled(1);  // a quarter of a sample
  EXPECT_EQ(count.GetUnscaled(), 0);
  EXPECT_EQ(count.GetScaled(), 0) << "the quarter would have been 1";
  count.SetScaled(2);
  EXPECT_EQ(count.GetUnscaled(), 1);
  EXPECT_EQ(count.GetScaled(), 2);
}

TEST(SampleCount, KeepsItsScale) {
  SampleCount count(100, 1.25L);
  count.SetScaled(3);
  count.SetUnscaled(7);
  EXPECT_EQ(count.GetScale(), 1.25L);
  SampleCount copy = count;
  copy.SetUnscaled(8);
  EXPECT_EQ(count.GetUnscaled(), 7);
}

}  // namespace
