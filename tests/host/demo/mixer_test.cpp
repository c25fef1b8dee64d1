#include "host/demo/sound/mixer.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace orbel::host::demo;

const Place kLeft{1.0F, -1.0F, 0.0F};
const Place kMiddle{1.0F, 0.0F, 0.0F};

TEST(Mixer, ANoteBeginsOnItsFrame) {
  Mixer mixer(8);
  mixer.Add({1.0F, 0.5F}, 3, kLeft);
  const StereoSound sound = mixer.Finish(1.0);
  EXPECT_FLOAT_EQ(sound.left[2], 0.0F);
  EXPECT_FLOAT_EQ(sound.left[3], 1.0F);
  EXPECT_FLOAT_EQ(sound.left[4], 0.5F);
  EXPECT_NEAR(sound.right[3], 0.0F, 1e-6F);
}

TEST(Mixer, NotesAddUp) {
  Mixer mixer(4);
  mixer.Add({0.25F}, 1, kLeft);
  mixer.Add({0.5F}, 1, kLeft);
  EXPECT_FLOAT_EQ(mixer.Finish(1.0).left[1], 0.75F);
}

TEST(Mixer, TheMiddleIsAsLoudAsASide) {
  Mixer mixer(1);
  mixer.Add({1.0F}, 0, kMiddle);
  const StereoSound sound = mixer.Finish(1.0);
  EXPECT_FLOAT_EQ(sound.left[0], sound.right[0]);
  EXPECT_NEAR(std::hypot(sound.left[0], sound.right[0]), 1.0F, 1e-6F);
}

TEST(Mixer, WhatReachesPastTheEndIsCutOff) {
  Mixer mixer(2);
  mixer.Add({1.0F, 1.0F, 1.0F}, 1, kLeft);
  mixer.Add({1.0F}, 2, kLeft);
  const StereoSound sound = mixer.Finish(1.0);
  ASSERT_EQ(sound.FrameCount(), 2u);
  EXPECT_FLOAT_EQ(sound.left[0], 0.0F);
  EXPECT_FLOAT_EQ(sound.left[1], 1.0F);
}

TEST(Mixer, TheRoomAnswersOnBothSidesAndFades) {
  Mixer mixer(96'000);
  mixer.Add({1.0F}, 0, {1.0F, -0.5F, 1.0F});
  const StereoSound sound = mixer.Finish(1.0);
  const auto energy = [&](const std::vector<float>& channel, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t index = from; index < to; ++index)
      sum += static_cast<double>(channel[index] * channel[index]);
    return sum;
  };
  EXPECT_EQ(energy(sound.left, 1, 1400), 0.0) << "no wall is so near";
  EXPECT_GT(energy(sound.left, 1400, 14'000), 1e-3);
  EXPECT_GT(energy(sound.right, 1400, 14'000), 1e-3);
  // 60 dB a second, and more for what is bright.
  EXPECT_LT(energy(sound.left, 72'000, 84'000), 1e-6 * energy(sound.left, 1400, 14'000));
}

}  // namespace
