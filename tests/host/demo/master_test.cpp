#include "host/demo/sound/master.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "host/demo/sound/oscillators.h"

namespace {

using namespace orbel::host::demo;

StereoSound Wave(float left, float right) {
  StereoSound sound(48'000);
  SineWave wave(440.0);
  for (std::size_t index = 0; index < sound.FrameCount(); ++index) {
    const float value = wave.Next();
    sound.left[index] = left * value;
    sound.right[index] = right * value;
  }
  return sound;
}

float PeakOf(const std::vector<float>& channel) {
  float peak = 0.0F;
  for (const float sample : channel) peak = std::max(peak, std::abs(sample));
  return peak;
}

TEST(Master, TheLoudestFrameIsThreeDecibelsBelowFullScale) {
  for (const float level : {0.001F, 0.5F, 30.0F}) {
    StereoSound sound = Wave(level, 0.5F * level);
    Master(sound);
    EXPECT_NEAR(PeakOf(sound.left), std::pow(10.0F, -3.0F / 20.0F), 1e-5F);
    EXPECT_LT(PeakOf(sound.right), PeakOf(sound.left));
  }
}

TEST(Master, EndsWithoutAClick) {
  StereoSound sound = Wave(1.0F, 1.0F);
  Master(sound);
  EXPECT_EQ(sound.left.back(), 0.0F);
  EXPECT_LT(std::abs(sound.left[sound.FrameCount() - 10]), 0.02F);
}

TEST(Master, SilenceStaysSilence) {
  StereoSound sound(1000);
  Master(sound);
  EXPECT_EQ(PeakOf(sound.left), 0.0F);
  EXPECT_EQ(PeakOf(sound.right), 0.0F);
  StereoSound emptyRoom(1000);
  for (float& sample : emptyRoom.left) sample = 1e-17F;
  Master(emptyRoom);
  EXPECT_LT(PeakOf(emptyRoom.left), 1e-16F);
  StereoSound nothing;
  Master(nothing);
  EXPECT_EQ(nothing.FrameCount(), 0u);
}

TEST(Master, TakesOutAConstant) {
  StereoSound sound = Wave(0.1F, 0.1F);
  for (float& sample : sound.left) sample += 0.5F;
  Master(sound);
  double sum = 0.0;
  for (std::size_t index = 24'000; index < 48'000; ++index) sum += static_cast<double>(sound.left[index]);
  EXPECT_LT(std::abs(sum / 24'000), 0.005);
}

}  // namespace
