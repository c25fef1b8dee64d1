// What is heard where the stretcher comes in, changes and goes; and that nothing of it is left elsewhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/reference_suite/audio/support/audible_run.h"

namespace {

using tesk_audio::StretchFactors;
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

class SeamsOfEngines : public testing::TestWithParam<StretchQuality> {};

struct LowTone {
  double hertz;
  double mostStep;  // in those of the tone itself
  double mostBend;
};

// A stretched tone has another phase than the recorded one, and a low one cannot be met where it fits: in
// half the time, at its full level, it would make steps six times as large as its own.
TEST_P(SeamsOfEngines, AreGentleToLowTones) {
  constexpr long long kFrames = 48'000;
  for (const LowTone& low : {LowTone{41.2, 2.0, 4.4}, LowTone{82.4, 1.45, 2.3}}) {
    const auto sound = Tones({low.hertz}, 0.5, kFrames);
    const double step = LargestStep(*sound, 0, kFrames);
    const double bend = LargestBend(*sound, 0, kFrames);
    for (const auto& [before, then] :
         {std::pair{1.0, 0.8}, {1.0, 1.1}, {1.0, 1.25}, {0.85, 1.1}, {1.2, 0.9}, {0.8, 1.0}, {1.1, 1.0}}) {
      for (long long at = 20'000; at < 21'400; at += 173) {
        AudibleRun run(Songs{{.frames = kFrames, .scales = {{0, before}, {at, then}}, .sound = sound}}, 5.0,
                       0.0, 48000.0, 1, GetParam());
        run.Play();
        const auto seam = static_cast<std::size_t>(run.PlacesOf(at).at(0));
        EXPECT_LE(LargestStep(run.heard, seam - 1'500, seam + 3'000), low.mostStep * step)
            << low.hertz << " Hz, " << before << " to " << then << " at " << at;
        EXPECT_LE(LargestBend(run.heard, seam - 1'500, seam + 3'000), low.mostBend * bend)
            << low.hertz << " Hz, " << before << " to " << then << " at " << at;
      }
    }
  }
}

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

// Ways to come to the caesura at `kStop`, or past it with a jump, with little before it.
struct Approach {
  const char* name;
  ScriptedPlayer::Song song;
  double crossfadeMs = 5.0;
};

constexpr long long kStop = 8'000;

std::vector<Approach> Approaches(long long distance) {
  const long long at = kStop - distance;
  return {
      {"enters", {.scales = {{at, 0.8}}}},
      {"changes key", {.scales = {{0, 0.8}}, .transpositions = {{at, -3}}}},
      {"changes tempo", {.scales = {{0, 0.8}, {at, 1.9}}}},
      {"leaves", {.scales = {{0, 1.0}, {at, 1.0}}, .transpositions = {{0, 5}, {at, 0}}}},
      {"jumps there stretched", {.jumps = {{4'000, {at}}}, .scales = {{0, 1.3}}}},
      {"jumps away stretched", {.jumps = {{at, {3'000}}}, .scales = {{0, 0.8}}}, 1000.0},
      {"jumps away as recorded", {.jumps = {{at, {3'000}}}}},
      {"jumps away as recorded, unannounced", {.jumps = {{at, {3'000}}}, .announcesJumps = false}},
      {"jumps away in a long cross-fade", {.jumps = {{at, {3'000}}}}, 300.0},
      {"jumps away and enters", {.jumps = {{at, {3'000}}}, .scales = {{4'000, 1.0}, {3'000, 0.7}}}},
  };
}

// The same song twice, another sound behind the caesura: up to it, nothing tells one from the other.
TEST_P(SeamsOfEngines, NothingFromBehindACaesuraIsHeardBeforeIt) {
  constexpr std::size_t kFrames = 16'000;
  const auto one = Tones({330.0, 495.0}, 0.3, kFrames);
  auto other = std::make_shared<std::vector<float>>(*one);
  for (std::size_t i = kStop; i < kFrames; ++i) (*other)[i] = i % 3 == 0 ? 0.9F : -0.7F;
  for (const long long distance : {0LL, 1LL, 170LL, 500LL, 3'000LL}) {
    for (const Approach& approach : Approaches(distance)) {
      const auto heard = [&](const std::shared_ptr<const std::vector<float>>& sound) {
        ScriptedPlayer::Song song = approach.song;
        song.frames = kFrames;
        song.caesuras = {kStop};
        song.sound = sound;
        AudibleRun run(Songs{song}, approach.crossfadeMs, 0.0, 48000.0, 1, GetParam());
        run.Play();
        EXPECT_TRUE(run.player.Waits());
        return run.heard;
      };
      const std::vector<float> expected = heard(one);
      EXPECT_GT(expected.size(), 3'000U);
      EXPECT_TRUE(expected == heard(other)) << approach.name << ", " << distance << " frames before it";
    }
  }
}

// The stretcher works with what lies behind a place too, and of a caesura that is nothing: it would be heard
// as an end some milliseconds before.
TEST_P(SeamsOfEngines, ACaesuraIsComeToWithoutAStep) {
  constexpr std::size_t kFrames = 16'000;
  for (const double hertz : {110.0, 440.0, 1000.0}) {
    const auto sound = Tones({hertz}, 0.5, kFrames);
    for (const StretchFactors factors :
         {StretchFactors{0.25, 0}, {0.33, 0}, {0.5, 0}, {0.8, 0}, {1.25, 0}, {2.0, 0}, {1.0, -5}, {1.0, 5}}) {
      AudibleRun run(Songs{{.frames = kFrames,
                            .caesuras = {kStop},
                            .scales = {{0, factors.scale}},
                            .transpositions = {{0, factors.semitones}},
                            .sound = sound}},
                     5.0, 0.0, 48000.0, 1, GetParam());
      run.Play();
      const std::size_t end = run.heard.size();
      const double own = LargestStep(run.heard, end / 2, end - 1'000);
      EXPECT_LE(LargestStep(run.heard, end - 1'000, end), 2.0 * own)
          << hertz << " Hz, " << factors.scale << ", " << factors.semitones;
    }
  }
}

// Recorded sound that has given way to the stretched one before it is back in its place at the caesura, and
// goes on up to it.
TEST_P(SeamsOfEngines, LeavingCloseBeforeACaesuraGoesOnUpToItWithoutAStep) {
  constexpr std::size_t kFrames = 16'000;
  for (const double hertz : {440.0, 1000.0}) {
    const auto sound = Tones({hertz}, 0.5, kFrames);
    for (const long long distance : {300LL, 1'000LL, 1'013LL, 1'029LL, 2'000LL, 2'017LL}) {
      AudibleRun run(Songs{{.frames = kFrames,
                            .caesuras = {kStop},
                            .scales = {{0, 0.8}, {kStop - distance, 1.0}},
                            .sound = sound}},
                     5.0, 0.0, 48000.0, 1, GetParam());
      run.Play();
      const double own = LargestStep(run.heard, 4'000, 8'000);
      EXPECT_LE(LargestStep(run.heard, 8'000, run.heard.size()), 1.4 * own) << hertz << " Hz, " << distance;
      EXPECT_EQ(run.heard.back(), (*sound)[kStop - 1]) << hertz << " Hz, " << distance;
    }
  }
}

// From a jump as recorded, at the caesura or close before it, into a sound that goes on.
TEST(JumpAwayFromACaesura, HasNoStepAndNoBendThatIsNotTheMusics) {
  constexpr std::size_t kFrames = 60'000;
  // The jump is one of whole waves.
  const auto sound = Tones({400.0}, 0.5, kFrames);
  for (const long long distance : {0LL, 1LL, 30LL, 170LL, 239LL}) {
    const long long at = kStop - distance;
    AudibleRun run(
        Songs{{.frames = kFrames, .caesuras = {kStop}, .jumps = {{at, {at - 3'000}}}, .sound = sound}}, 5.0);
    run.Play();
    const auto jump = static_cast<std::size_t>(at);
    EXPECT_LE(LargestStep(run.heard, jump - 100, jump + 1'000), 1.5 * LargestStep(run.heard, 2'000, 4'000))
        << distance;
    EXPECT_LE(LargestBend(run.heard, jump - 100, jump + 1'000), 0.006) << distance;
  }
}

// A song of two tones that jumps, stretched, from one into the middle of a wave of the other.
std::vector<float> HeardOfAJump(double crossfadeMs, StretchQuality quality) {
  AudibleRun run(Songs{{.frames = 60'000,
                        .jumps = {{30'000, {10'011}}},
                        .scales = {{0, 1.1}},
                        .sound = Tones({440.0, 661.0}, 0.25, 60'000)}},
                 crossfadeMs, 0.0, 48000.0, 1, quality);
  run.Play();
  return run.heard;
}

// Notes of half a second over a low tone.
std::shared_ptr<const std::vector<float>> Notes(std::size_t frames) {
  auto sound = std::make_shared<std::vector<float>>(frames);
  for (std::size_t i = 0; i < frames; ++i) {
    const double time = static_cast<double>(i) / 48000.0;
    const double note = 0.25 * std::exp(-6.0 * std::fmod(time, 0.5)) * std::sin(2.0 * M_PI * 440.0 * time);
    (*sound)[i] = static_cast<float>(note + 0.1 * std::sin(2.0 * M_PI * 220.0 * time));
  }
  return sound;
}

float Peak(const std::vector<float>& heard, std::size_t from, std::size_t to) {
  float peak = 0.0F;
  for (std::size_t i = from; i < to; ++i) peak = std::max(peak, std::fabs(heard[i]));
  return peak;
}

constexpr float kDecibel = 1.122F;

// Tempo and key change where notes begin: neither what goes out nor what comes in is without the attack.
TEST_P(SeamsOfEngines, AnAttackAtAChangeIsAsLoudAsElsewhere) {
  constexpr std::size_t kFrames = 28'000;
  const auto sound = Notes(kFrames);
  const float recorded = Peak(*sound, 0, kFrames);
  constexpr double kMost = 0.02;  // the music's own, in the highest key
  for (const Change& change :
       {Change{1.0, 0, 1.1, 0}, Change{1.0, 0, 1.0, 2}, Change{1.1, 0, 0.9, 0}, Change{1.0, -2, 1.0, 2}}) {
    for (const long long behind : {-20LL, 0LL, 60LL}) {
      const long long at = 24'000 - behind;
      AudibleRun run(Songs{{.frames = kFrames,
                            .scales = {{0, change.scale}, {at, change.thenScale}},
                            .transpositions = {{0, change.semitones}, {at, change.thenSemitones}},
                            .sound = sound}},
                     5.0, 0.0, 48000.0, 1, GetParam());
      run.Play();
      const auto seam = static_cast<std::size_t>(run.PlacesOf(at).at(0));
      EXPECT_LE(Peak(run.heard, seam - 240, seam + 720), kDecibel * recorded)
          << testing::PrintToString(change) << ", " << behind << " frames before the attack";
      EXPECT_LE(LargestStep(run.heard, seam - 240, seam + 720), 1.2 * kMost)
          << testing::PrintToString(change) << ", " << behind << " frames before the attack";
    }
  }
}

// What ends where a note begins goes on until then: silence there would be heard as a click before it.
TEST_P(SeamsOfEngines, NoClickHeraldsAnAttack) {
  constexpr std::size_t kFrames = 100'000;
  constexpr double kMost = 0.0173;  // the music's own
  const auto sound = Notes(kFrames);
  for (const StretchFactors factors : {StretchFactors{0.33, 0}, {0.4, 0}, {0.6, 0}, {2.0, 0}, {1.0, -12}}) {
    AudibleRun run(Songs{{.frames = kFrames,
                          .scales = {{0, factors.scale}},
                          .transpositions = {{0, factors.semitones}},
                          .sound = sound}},
                   5.0, 0.0, 48000.0, 1, GetParam());
    run.Play();
    for (const long long note : {24'000LL, 48'000LL, 72'000LL, 96'000LL}) {
      const auto place = static_cast<std::size_t>(run.PlacesOf(note).at(0));
      EXPECT_LE(LargestStep(run.heard, place - 480, place - 72), kMost)
          << factors.scale << ", " << factors.semitones << ", the note at " << note;
    }
  }
}

// A passage played again, from a note on to another: both are there.
TEST_P(SeamsOfEngines, AnAttackAtAJumpIsAsLoudAsElsewhere) {
  constexpr std::size_t kFrames = 52'000;
  const auto sound = Notes(kFrames);
  for (const StretchFactors factors : {StretchFactors{0.97, 0}, {1.1, 0}, {1.0, 2}}) {
    AudibleRun run(Songs{{.frames = kFrames,
                          .jumps = {{48'000, {24'000}}},
                          .scales = {{0, factors.scale}},
                          .transpositions = {{0, factors.semitones}},
                          .sound = sound}},
                   5.0, 0.0, 48000.0, 1, GetParam());
    run.Play();
    const auto jump = static_cast<std::size_t>(run.PlacesOf(24'000).at(1));
    EXPECT_LE(Peak(run.heard, jump - 240, jump + 720), kDecibel * Peak(*sound, 0, kFrames))
        << factors.scale << ", " << factors.semitones;
  }
}

TEST_P(SeamsOfEngines, AStretchedJumpIsASeamOfFiveMillisecondsWhateverLessIsSaid) {
  const std::vector<float> heard = HeardOfAJump(0.0, GetParam());
  EXPECT_EQ(heard, HeardOfAJump(5.0, GetParam()));
  EXPECT_EQ(heard, HeardOfAJump(2.0, GetParam()));
  const auto jump = static_cast<std::size_t>(30'000 / 1.1);
  EXPECT_LE(LargestStep(heard, jump - 200, jump + 1'000), 1.2 * LargestStep(heard, 5'000, 20'000));
  EXPECT_LE(LargestBend(heard, jump - 200, jump + 1'000), 3.0 * LargestBend(heard, 5'000, 20'000));
}

TEST_P(SeamsOfEngines, AStretchedJumpIsASeamOfTenMillisecondsWhateverMoreIsSaid) {
  const std::vector<float> heard = HeardOfAJump(10.0, GetParam());
  EXPECT_EQ(heard, HeardOfAJump(1000.0, GetParam()));
  EXPECT_NE(heard, HeardOfAJump(9.0, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Qualities, SeamsOfEngines,
                         testing::Values(StretchQuality::Faster, StretchQuality::Finer));

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
