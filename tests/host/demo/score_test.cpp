#include "host/demo/score/score.h"

#include <gtest/gtest.h>

namespace {

using namespace orbel::host::demo;

TEST(Score, BarsAreCountedThroughTheMetersFromTheFirstBar) {
  Score score("Song", 480);
  score.Meter(0, 1, 4);
  score.Meter(1, 3, 4);
  score.Meter(3, 6, 8);
  EXPECT_EQ(score.At(0), 0u);
  EXPECT_EQ(score.At(1), 480u);
  EXPECT_EQ(score.At(2), 480u + 1440u);
  EXPECT_EQ(score.At(3), 480u + 2 * 1440u);
  EXPECT_EQ(score.At(4), 480u + 3 * 1440u);
  EXPECT_EQ(score.At(4, 1.5), 480u + 3 * 1440u + 720u);
}

TEST(Score, ABarBeforeTheFirstMeterIsAMistake) {
  Score score("Song", 480);
  score.Meter(1, 4, 4);
  try {
    score.At(0);
    FAIL() << "bar 0 was found";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "Song: bar 0 lies before the first meter");
  }
}

TEST(Score, KnowsItsBarLines) {
  Score score("Song", 480);
  EXPECT_FALSE(score.IsBarLine(0)) << "there is no meter yet";
  score.Meter(0, 1, 4);
  score.Meter(1, 3, 4);
  for (const Tick tick : {0u, 480u, 1920u, 3360u}) EXPECT_TRUE(score.IsBarLine(tick)) << tick;
  for (const Tick tick : {240u, 960u, 1440u, 3361u}) EXPECT_FALSE(score.IsBarLine(tick)) << tick;
}

TEST(Score, TemposAreWholeMicroseconds) {
  Score score("Song", 480);
  score.Tempo(0, 120);
  score.Tempo(480, 116);
  EXPECT_EQ(score.Tempos().at(0).microsecondsPerQuarter, 500'000u);
  EXPECT_EQ(score.Tempos().at(1).microsecondsPerQuarter, 517'241u);
}

TEST(Score, ARampEndsAtItsLastTempo) {
  Score score("Song", 480);
  score.Ramp(960, 1920, 120, 60, 4);
  ASSERT_EQ(score.Tempos().size(), 4u);
  EXPECT_EQ(score.Tempos()[0].tick, 960u);
  EXPECT_EQ(score.Tempos()[0].microsecondsPerQuarter, 571'429u);  // 105
  EXPECT_EQ(score.Tempos()[1].tick, 1200u);
  EXPECT_EQ(score.Tempos()[3].tick, 1680u);
  EXPECT_EQ(score.Tempos()[3].microsecondsPerQuarter, 1'000'000u);
}

}  // namespace
