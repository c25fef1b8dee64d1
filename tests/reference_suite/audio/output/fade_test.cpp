#include "reference_suite/audio/output/fade.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<float> Ones(std::size_t count) {
  return std::vector<float>(count, 1.0F);
}

TEST(Fade, AtFullLevelLeavesEverySampleAsItIs) {
  tesk_audio::Fade fade(2);
  std::vector<float> frames{0.1F, -1e30F, 3.0F, -0.0F};
  const std::vector<float> before = frames;
  fade.Apply(frames.data(), 2);
  EXPECT_EQ(frames, before);
  EXPECT_FALSE(fade.IsSilent());
}

TEST(Fade, GoesInAndOutInAStraightLine) {
  tesk_audio::Fade fade(1);
  fade.Set(false);
  EXPECT_TRUE(fade.IsSilent());
  fade.StartIn(4);
  std::vector<float> frames = Ones(6);
  fade.Apply(frames.data(), 6);
  EXPECT_EQ(frames, (std::vector<float>{0.25F, 0.5F, 0.75F, 1.0F, 1.0F, 1.0F}));
  fade.StartOut(4, 4);
  EXPECT_EQ(fade.GetLeft(), 4U);
  frames = Ones(6);
  fade.Apply(frames.data(), 6);
  EXPECT_EQ(frames, (std::vector<float>{0.75F, 0.5F, 0.25F, 0.0F, 0.0F, 0.0F}));
  EXPECT_TRUE(fade.IsSilent());
}

TEST(Fade, TurnsRoundWhereItHasComeTo) {
  tesk_audio::Fade fade(1);
  fade.StartOut(4, 4);
  std::vector<float> frames = Ones(1);
  fade.Apply(frames.data(), 1);
  fade.StartIn(4);
  EXPECT_EQ(fade.GetLeft(), 1U) << "a quarter of the way is a quarter of the time";
  frames = Ones(2);
  fade.Apply(frames.data(), 2);
  EXPECT_EQ(frames, Ones(2));
}

TEST(Fade, OfNoLengthActsAtOnce) {
  tesk_audio::Fade fade(1);
  fade.StartOut(0, 0);
  EXPECT_FALSE(fade.IsUnderWay());
  EXPECT_TRUE(fade.IsSilent());
  fade.StartIn(0);
  std::vector<float> frames = Ones(3);
  fade.Apply(frames.data(), 3);
  EXPECT_EQ(frames, Ones(3));
}

TEST(Fade, OutIsSteeperWhereFewerFramesAreToBeHad) {
  tesk_audio::Fade fade(1);
  fade.StartOut(1000, 4);
  EXPECT_EQ(fade.GetLeft(), 4U);
  std::vector<float> frames = Ones(4);
  fade.Apply(frames.data(), 4);
  EXPECT_EQ(frames, (std::vector<float>{0.75F, 0.5F, 0.25F, 0.0F}));
}

TEST(Fade, IsTheSameInAnyParts) {
  tesk_audio::Fade whole(2);
  tesk_audio::Fade parts(2);
  whole.Set(false);
  parts.Set(false);
  whole.StartIn(97);
  parts.StartIn(97);
  std::vector<float> a(300, 0.37F);
  std::vector<float> b = a;
  whole.Apply(a.data(), 150);
  for (std::size_t i = 0; i < 150; i += 10) parts.Apply(b.data() + 2 * i, 10);
  EXPECT_EQ(a, b);
}

}  // namespace
