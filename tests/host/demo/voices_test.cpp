// The instruments: in tune, finite, and silent at their end.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/demo/sound/voice.h"

namespace {

using namespace orbel::host::demo;

const Voice kPitched[] = {Voice::kGuitar, Voice::kBass,     Voice::kElectricPiano, Voice::kStrings,
                          Voice::kFlute,  Voice::kClarinet, Voice::kAccordion,     Voice::kBells};

double LoudnessAt(const Sound& sound, double hertz) {
  double real = 0.0;
  double imaginary = 0.0;
  const std::size_t first = FramesOfSeconds(0.1);
  const std::size_t count = FramesOfSeconds(0.8);
  for (std::size_t index = 0; index < count; ++index) {
    const double turn = 2.0 * std::numbers::pi * static_cast<double>(index);
    const double window = 0.5 - 0.5 * std::cos(turn / static_cast<double>(count));
    const double value = window * static_cast<double>(sound[first + index]);
    real += value * std::cos(turn * hertz / kSampleRate);
    imaginary += value * std::sin(turn * hertz / kSampleRate);
  }
  return std::hypot(real, imaginary);
}

float PeakOf(const Sound& sound) {
  float peak = 0.0F;
  for (const float sample : sound) peak = std::max(peak, std::abs(sample));
  return peak;
}

class EveryVoice : public testing::TestWithParam<Voice> {};

TEST_P(EveryVoice, IsInTuneWithinTwelveCents) {
  for (const int key : {45, 57, 69, 81}) {
    const Sound sound = PlayVoice(GetParam(), key, 1.0, 90, 7);
    const double pitch = 440.0 * std::exp2((key - 69) / 12.0);
    double loudest = 0.0;
    int cents = -100;
    for (int shift = -60; shift <= 60; shift += 4) {
      const double loudness = LoudnessAt(sound, pitch * std::exp2(shift / 1200.0));
      if (loudness <= loudest) continue;
      loudest = loudness;
      cents = shift;
    }
    EXPECT_LE(std::abs(cents), 12) << "key " << key;
  }
}

TEST_P(EveryVoice, IsFiniteAndNeverLouderThanFullScale) {
  for (const int key : {24, 40, 60, 84, 108}) {
    for (const int velocity : {1, 64, 127}) {
      const Sound sound = PlayVoice(GetParam(), key, 0.3, velocity, 3);
      EXPECT_TRUE(
          std::all_of(sound.begin(), sound.end(), [](float sample) { return std::isfinite(sample); }));
      EXPECT_GT(PeakOf(sound), 0.0F);
      EXPECT_LT(PeakOf(sound), 1.6F) << "key " << key;
    }
  }
}

TEST_P(EveryVoice, DiesAwayToSilence) {
  const Sound sound = PlayVoice(GetParam(), 60, 0.4, 100, 3);
  EXPECT_GE(sound.size(), FramesOfSeconds(0.4));
  EXPECT_LT(std::abs(sound.back()), 1e-4F);
}

TEST_P(EveryVoice, StartsFromSilence) {
  EXPECT_LT(std::abs(PlayVoice(GetParam(), 60, 0.4, 100, 3).front()), 0.05F);
}

TEST_P(EveryVoice, GrowsWithStrength) {
  EXPECT_LT(PeakOf(PlayVoice(GetParam(), 60, 0.4, 40, 3)), PeakOf(PlayVoice(GetParam(), 60, 0.4, 120, 3)));
}

TEST_P(EveryVoice, SoundsTheSameEveryTime) {
  EXPECT_EQ(PlayVoice(GetParam(), 60, 0.4, 100, 3), PlayVoice(GetParam(), 60, 0.4, 100, 3));
}

INSTANTIATE_TEST_SUITE_P(Voices, EveryVoice, testing::ValuesIn(kPitched));

TEST(Drums, EveryInstrumentOfTheKitSoundsAndDiesAway) {
  for (const int key : {36, 37, 38, 40, 42, 46, 49, 54, 70, 76, 77}) {
    const Sound sound = PlayVoice(Voice::kDrums, key, 0.1, 100, 5);
    EXPECT_GT(PeakOf(sound), 0.005F) << key;
    EXPECT_LT(PeakOf(sound), 1.5F) << key;
    EXPECT_LT(std::abs(sound.back()), 1e-4F) << key;
  }
}

TEST(Drums, OtherKeysAreSilent) {
  EXPECT_TRUE(PlayVoice(Voice::kDrums, 35, 0.1, 100, 5).empty());
}

}  // namespace
