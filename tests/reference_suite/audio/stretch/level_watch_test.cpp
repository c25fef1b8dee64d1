#include "reference_suite/audio/stretch/level_watch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

namespace {

using tesk_audio::LevelWatch;

constexpr double kRateHz = 48000.0;
constexpr std::size_t kChunk = 256;

// Lets a watch see a second of two sounds, given as levels over time in seconds, and returns the moment at
// which it first says that it is weakened; negative: never.
double FirstWeak(const std::function<double(double)>& in, const std::function<double(double)>& out) {
  LevelWatch watch(kRateHz, 1);
  std::vector<float> one(kChunk);
  std::vector<float> other(kChunk);
  for (std::size_t at = 0; at < 48'000; at += kChunk) {
    for (std::size_t i = 0; i < kChunk; ++i) {
      const double seconds = static_cast<double>(at + i) / kRateHz;
      const double wave = std::sin(2.0 * M_PI * 440.0 * seconds);
      one[i] = static_cast<float>(in(seconds)*wave);
      other[i] = static_cast<float>(out(seconds) * wave);
    }
    watch.See(one.data(), kChunk, other.data(), kChunk);
    if (watch.IsWeakened()) return static_cast<double>(at + kChunk) / kRateHz;
  }
  return -1.0;
}

double Full(double) {
  return 0.5;
}

TEST(LevelWatch, SaysNothingOfWhatKeepsItsLevelOrLosesLess) {
  EXPECT_LT(FirstWeak(Full, Full), 0.0);
  EXPECT_LT(FirstWeak(Full, [](double) { return 0.5 * 0.72; }), 0.0) << "2.9 dB";
}

TEST(LevelWatch, SeesThatMoreThanHalfOfThePowerIsLost) {
  const double first = FirstWeak(Full, [](double) { return 0.5 * 0.69; });
  EXPECT_GT(first, 0.05);
  EXPECT_LT(first, 0.12) << "3.2 dB";
}

TEST(LevelWatch, TakesNoDelayAndNoSwellForALoss) {
  const auto swells = [](double seconds) { return 0.01 * std::exp(4.0 * seconds); };
  EXPECT_LT(FirstWeak(swells, [&](double seconds) { return swells(seconds - 0.04); }), 0.0);
  const auto begins = [](double seconds) { return seconds < 0.3 ? 0.0 : 0.5; };
  EXPECT_LT(FirstWeak(begins, [&](double seconds) { return begins(seconds - 0.04); }), 0.0);
  const auto ends = [](double seconds) { return seconds < 0.3 ? 0.5 : 0.001; };
  EXPECT_LT(FirstWeak(ends, [&](double seconds) { return ends(seconds - 0.04); }), 0.0);
}

TEST(LevelWatch, LeavesSilenceAlone) {
  EXPECT_LT(FirstWeak([](double) { return 1e-5; }, [](double) { return 0.0; }), 0.0);
}

TEST(LevelWatch, ForgetsWhatItSaw) {
  LevelWatch watch(kRateHz, 2);
  const std::vector<float> loud(2 * 4'800, 0.5F);
  const std::vector<float> faint(2 * 4'800, 0.1F);
  for (int i = 0; i < 9; ++i) watch.See(loud.data(), 480, faint.data(), 480);
  EXPECT_TRUE(watch.IsWeakened());
  watch.Forget();
  EXPECT_FALSE(watch.IsWeakened());
  for (int i = 0; i < 8; ++i) watch.See(loud.data(), 480, faint.data(), 480);
  EXPECT_FALSE(watch.IsWeakened());
  watch.See(loud.data(), 480, faint.data(), 480);
  EXPECT_TRUE(watch.IsWeakened());
}

}  // namespace
