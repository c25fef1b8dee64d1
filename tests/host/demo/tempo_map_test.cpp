#include "host/demo/score/tempo_map.h"

#include <gtest/gtest.h>

namespace {

using namespace orbel::host::demo;

TEST(TempoMap, OneTempo) {
  Score score("Song", 480);
  score.Tempo(0, 120);
  const TempoMap map(score, 0, 48'000);
  EXPECT_EQ(map.FrameAt(0), 0);
  EXPECT_EQ(map.FrameAt(1), 50);
  EXPECT_EQ(map.FrameAt(480), 24'000);
  EXPECT_EQ(map.FrameAt(960'000), 48'000'000);
}

TEST(TempoMap, WithoutATempoAtTheStart120Hold) {
  Score score("Song", 480);
  score.Tempo(480, 60);
  const TempoMap map(score, 0, 48'000);
  EXPECT_EQ(map.FrameAt(480), 24'000);
  EXPECT_EQ(map.FrameAt(960), 24'000 + 48'000);
}

TEST(TempoMap, EachStretchIsRoundedByItself) {
  Score score("Song", 480);
  // 22.05 frames a tick at 44,100: half a frame over after ten ticks rounds away from zero.
  for (const Tick tick : {0u, 10u, 20u, 30u}) score.Tempo(tick, 250);
  const TempoMap map(score, 0, 44'100);
  EXPECT_EQ(map.FrameAt(10), 221);  // 220.5
  EXPECT_EQ(map.FrameAt(20), 442);
  EXPECT_EQ(map.FrameAt(30), 663);
  EXPECT_EQ(map.FrameAt(31), 685);
}

TEST(TempoMap, TheAudioBeginsWhereItIsToldTo) {
  Score score("Song", 480);
  score.Tempo(0, 120);
  score.Tempo(960, 60);
  const TempoMap map(score, 480, 48'000);
  EXPECT_EQ(map.FrameAt(0), 0);
  EXPECT_EQ(map.FrameAt(479), 0);
  EXPECT_EQ(map.FrameAt(480), 0);
  EXPECT_EQ(map.FrameAt(481), 50);
  EXPECT_EQ(map.FrameAt(960), 24'000);
  EXPECT_EQ(map.FrameAt(961), 24'100);
}

TEST(TempoMap, TheLastTempoOfATickHolds) {
  Score score("Song", 480);
  score.Tempo(0, 60);
  score.Tempo(0, 120);
  EXPECT_EQ(TempoMap(score, 0, 48'000).FrameAt(480), 24'000);
}

}  // namespace
