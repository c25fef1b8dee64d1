// What is heard where the stretcher comes in, changes and goes; and that nothing of it is left elsewhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/reference_suite/audio/support/audible_run.h"

namespace {

using tesk_audio::StretchQuality;

struct Change {
  double scale;
  int semitones;
  double thenScale;
  int thenSemitones;
};

void PrintTo(const Change& change, std::ostream* out) {
  *out << change.scale << " " << change.semitones << " to " << change.thenScale << " "
       << change.thenSemitones;
}

class Seams : public testing::TestWithParam<std::tuple<Change, StretchQuality>> {};

// The quietest and the loudest fiftieth of a second of a stretch of sound, as decibels.
std::pair<double, double> Range(const std::vector<float>& heard, std::size_t from, std::size_t to) {
  double quietest = 100.0;
  double loudest = -100.0;
  for (std::size_t i = from; i + 960 <= to; i += 60) {
    const double level = 20.0 * std::log10(Level(heard, i, 960));
    quietest = std::min(quietest, level);
    loudest = std::max(loudest, level);
  }
  return {quietest, loudest};
}

TEST_P(Seams, HaveTheLevelOfTheMusicAndNoStepThatIsNotItsOwn) {
  const Change& change = std::get<Change>(GetParam());
  const std::vector<std::vector<double>> sounds{
      {440.0}, {1000.0}, {110.0, 138.6, 164.8, 220.0, 329.6, 440.0, 660.0, 1320.0}};
  for (const auto& tones : sounds) {
    constexpr long long kFrames = 72'000;
    constexpr long long kAt = 36'000;
    const double level = 0.5 / static_cast<double>(tones.size());
    AudibleRun run(Songs{{.frames = kFrames,
                          .scales = {{0, change.scale}, {kAt, change.thenScale}},
                          .transpositions = {{0, change.semitones}, {kAt, change.thenSemitones}},
                          .sound = Tones(tones, level, kFrames)}},
                   5.0, 0.0, 48000.0, 1, std::get<StretchQuality>(GetParam()));
    run.Play();
    const auto seam = static_cast<std::size_t>(run.PlacesOf(kAt).at(0));
    const auto before = Range(run.heard, seam - 9'600, seam - 1'000);
    const auto after = Range(run.heard, seam + 4'000, seam + 12'600);
    const auto around = Range(run.heard, seam - 1'200, seam + 2'200);
    EXPECT_GE(around.first, std::min(before.first, after.first) - 1.0) << tones.size() << " tones";
    EXPECT_LE(around.second, std::max(before.second, after.second) + 1.0) << tones.size() << " tones";
    const double own = std::max(LargestStep(run.heard, seam - 9'600, seam - 1'000),
                                LargestStep(run.heard, seam + 4'000, seam + 12'600));
    EXPECT_LE(LargestStep(run.heard, seam - 1'000, seam + 4'000), 1.2 * own) << tones.size() << " tones";
    const double bend = std::max(LargestBend(run.heard, seam - 9'600, seam - 1'000),
                                 LargestBend(run.heard, seam + 4'000, seam + 12'600));
    EXPECT_LE(LargestBend(run.heard, seam - 1'000, seam + 4'000), 1.2 * bend) << tones.size() << " tones";
  }
}

INSTANTIATE_TEST_SUITE_P(EnteringChangingAndLeaving, Seams,
                         testing::Combine(testing::Values(Change{1.0, 0, 1.1, 0}, Change{1.0, 0, 0.5, 0},
                                                          Change{1.0, 0, 1.0, 2}, Change{1.1, 0, 1.0, 0},
                                                          Change{0.5, 0, 1.0, 0}, Change{2.0, 0, 1.0, 0},
                                                          Change{1.0, 2, 1.0, 0}, Change{1.1, 0, 1.12, 0},
                                                          Change{0.8, 0, 1.3, 0}, Change{1.0, -3, 1.0, 3}),
                                          testing::Values(StretchQuality::Faster, StretchQuality::Finer)));

TEST(StretchBypass, EverySampleIsAsRecordedBeforeAndAQuarterOfASecondAfter) {
  for (const StretchQuality quality : {StretchQuality::Faster, StretchQuality::Finer}) {
    AudibleRun run(Songs{{.frames = 100'000, .scales = {{30'000, 1.25L}, {50'000, 1.0L}}}}, 5.0, 0.0, 48000.0,
                   1, quality);
    run.Play();
    const std::vector<float> recorded = Frames(0, 100'000);
    EXPECT_TRUE(std::equal(recorded.begin(), recorded.begin() + 30'000, run.heard.begin()));
    const std::size_t left = 30'000 + 16'000;
    ASSERT_EQ(run.heard.size(), left + 50'000);
    EXPECT_FALSE(std::equal(recorded.begin() + 50'000, recorded.end(), run.heard.begin() + left))
        << "the seam itself is a cross-fade";
    EXPECT_TRUE(
        std::equal(recorded.begin() + 50'000 + 12'000, recorded.end(), run.heard.begin() + left + 12'000));
  }
}

TEST(StretchBypass, WhatFitsIsAsRecordedFiveMillisecondsAfter) {
  // At scale 1 and an octave, every second wave meets the recorded one.
  const auto sound = Tones({440.0}, 0.5, 100'000);
  AudibleRun run(Songs{{.frames = 100'000,
                        .scales = {{30'000, 0.8L}, {50'000, 1.0L}},
                        .sound = Clicks({40'000}, 100'000)}},
                 5.0);
  run.Play();
  ASSERT_EQ(run.heard.size(), 30'000 + 25'000 + 50'000);
  for (std::size_t i = 55'000 + 240; i < run.heard.size(); ++i) ASSERT_EQ(run.heard[i], 0.0F) << i;
}

TEST(StretchOfASong, GivesTheSameBytesEveryTime) {
  const auto once = [] {
    AudibleRun run(Songs{{.frames = 60'000,
                          .jumps = {{30'000, {5'000}}},
                          .scales = {{2'000, 1.1L}, {20'000, 0.7L}, {40'000, 1.0L}},
                          .transpositions = {{10'000, 2}, {45'000, -3}},
                          .sound = Tones({220.0, 331.0, 447.0}, 0.2, 60'000)}},
                   5.0, 0.0, 48000.0, 2, StretchQuality::Finer);
    run.Play();
    return run.heard;
  };
  EXPECT_EQ(once(), once());
}

TEST(StretchOfASong, HasExactlyTheLengthThatItsTempoSays) {
  AudibleRun run(Songs{{.frames = 100'001, .scales = {{0, 1.1L}, {33'333, 0.9L}, {66'666, 1.7L}}}});
  run.Play();
  const double length = 33'333 / 1.1 + 33'333 / 0.9 + 33'335 / 1.7;
  EXPECT_NEAR(static_cast<double>(run.heard.size()), length, 0.51);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 100'001);
}

TEST(StretchAtACaesura, NothingOfWhatFollowsIsHeardBeforeIt) {
  // Loud from the caesura on, silent before it.
  auto sound = std::make_shared<std::vector<float>>(60'000, 0.0F);
  const auto tone = Tones({440.0}, 0.9, 60'000);
  std::copy(tone->begin() + 30'000, tone->end(), sound->begin() + 30'000);
  AudibleRun run(Songs{{.frames = 60'000, .caesuras = {30'000}, .scales = {{0, 0.8L}}, .sound = sound}}, 5.0,
                 0.0, 48000.0, 1, StretchQuality::Finer);
  run.Play();
  EXPECT_TRUE(run.player.Waits());
  ASSERT_EQ(run.heard.size(), 37'500U);
  for (std::size_t i = 0; i < run.heard.size(); ++i) ASSERT_EQ(run.heard[i], 0.0F) << i;
  run.player.SetPlays(true);
  run.output->Start();
  while (run.Step()) {
  }
  EXPECT_EQ(run.heard.size(), 75'000U);
  EXPECT_GT(Level(run.heard, 37'500, 480), 0.3) << "and after it at once";
}

TEST(StretchAtAttacca, TheNextSongBeginsAtItsFirstFrameAndTheOneBeforeRingsOut) {
  AudibleRun run(
      Songs{
          {.frames = 30'000, .scales = {{0, 0.8L}}, .isAttacca = true, .sound = Tones({440.0}, 0.5, 40'000)},
          {.frames = 30'000, .scales = {{0, 0.8L}}, .sound = Clicks({0, 10'000}, 30'000)}},
      5.0, 0.0, 48000.0, 1, StretchQuality::Finer);
  run.Play();
  ASSERT_EQ(run.heard.size(), 75'000U);
  EXPECT_LE(std::fabs(LoudestNear(run.heard, 37'500.0 + 12'500.0, 600)), 3.0);
  EXPECT_GT(run.heard[37'500] - run.heard[37'499], 0.8F) << "an attack on the first frame is there, whole";
  EXPECT_LE(LargestStep(run.heard, 30'000, 37'500), 0.05) << "no cut at the border";
  EXPECT_LE(LargestStep(run.heard, 37'502, 37'900), 0.1) << "its stretched self is faint under it";
}

TEST(StretchExtremes, AQuarterAndFourTimesTheTempoAndTwoOctavesPlay) {
  for (const double scale : {0.25, 4.0}) {
    for (const int semitones : {-24, 24}) {
      AudibleRun run(Songs{{.frames = 48'000,
                            .scales = {{0, scale}},
                            .transpositions = {{0, semitones}},
                            .sound = Tones({440.0}, 0.5, 48'000)}},
                     5.0, 0.0, 48000.0, 2, StretchQuality::Faster);
      run.Play();
      EXPECT_EQ(run.heard.size(), 2 * static_cast<std::size_t>(48'000 / scale));
      const double level = Level(run.heard, run.heard.size() / 4, run.heard.size() / 2);
      EXPECT_GT(level, 0.1) << scale << " " << semitones;
      EXPECT_LT(level, 0.5) << scale << " " << semitones;
    }
  }
}

}  // namespace
