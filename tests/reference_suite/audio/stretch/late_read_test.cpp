#include "reference_suite/audio/stretch/late_read.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/reference_suite/audio/support/sounding_source.h"

namespace {

constexpr std::size_t kFrames = 24'000;

std::vector<float> Sine() {
  std::vector<float> samples;
  for (std::size_t i = 0; i < kFrames; ++i) {
    samples.push_back(
        static_cast<float>(0.5 * std::sin(2.0 * M_PI * 440.0 * static_cast<double>(i) / 48000.0)));
  }
  return samples;
}

class LateReads : public testing::TestWithParam<double> {};

TEST_P(LateReads, BeginAsideAndComeBackToTheBit) {
  const std::vector<float> recorded = Sine();
  SoundingSource source(recorded, 1);
  tesk_audio::LateRead late(source, 48000.0, 1, 480, 120);
  late.Begin(GetParam(), kFrames);
  std::vector<float> heard = recorded;
  for (std::size_t i = 1000; i + 480 <= kFrames; i += 480) {
    late.Apply(static_cast<long long>(i), heard.data() + i, 480);
  }
  EXPECT_FALSE(late.IsActive());
  const double begins = 1000.0 - GetParam();
  EXPECT_NEAR(heard[1000], 0.5 * std::sin(2.0 * M_PI * 440.0 * begins / 48000.0), 1e-3);
  for (std::size_t i = 1001; i < kFrames; ++i) {
    ASSERT_LT(std::fabs(heard[i] - heard[i - 1]), 0.5 * 0.0576 * 1.03) << "no step at " << i;
  }
  for (std::size_t i = 1000 + 12'000; i < kFrames; ++i) ASSERT_EQ(heard[i], recorded[i]) << i;
}

INSTANTIATE_TEST_SUITE_P(Frames, LateReads, testing::Values(120.0, 0.4, -3.5, -120.0));

TEST_P(LateReads, AreBackWithinTheRoomThatThereIsAndReadNothingBehindIt) {
  constexpr std::size_t kRoom = 1'500;
  std::vector<float> recorded = Sine();
  const std::vector<float> own = recorded;
  // Nobody could mistake it.
  for (std::size_t i = 1000 + kRoom + 2; i < kFrames; ++i) recorded[i] = 1000.0F;
  SoundingSource source(recorded, 1);
  tesk_audio::LateRead late(source, 48000.0, 1, 480, 120);
  late.Begin(GetParam(), kRoom);
  std::vector<float> heard = recorded;
  for (std::size_t i = 1000; i + 480 <= kFrames; i += 480) {
    late.Apply(static_cast<long long>(i), heard.data() + i, 480);
  }
  EXPECT_FALSE(late.IsActive());
  for (std::size_t i = 1001; i < 1000 + kRoom; ++i) {
    ASSERT_LT(std::fabs(heard[i] - heard[i - 1]), 0.5 * 0.0576 * 1.2) << "no step at " << i;
  }
  for (std::size_t i = 1000 + kRoom; i < kFrames; ++i) ASSERT_EQ(heard[i], recorded[i]) << i;
}

TEST(LateRead, CanceledOrWithoutDelayItChangesNothing) {
  SoundingSource source(Sine(), 1);
  tesk_audio::LateRead late(source, 48000.0, 1, 480, 120);
  late.Begin(0.0, kFrames);
  EXPECT_FALSE(late.IsActive());
  late.Begin(10.0, kFrames);
  EXPECT_TRUE(late.IsActive());
  late.Cancel();
  std::vector<float> frames(480, 0.25F);
  late.Apply(0, frames.data(), 480);
  EXPECT_EQ(frames, std::vector<float>(480, 0.25F));
}

}  // namespace
