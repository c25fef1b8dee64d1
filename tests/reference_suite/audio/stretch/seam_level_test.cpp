#include "reference_suite/audio/stretch/seam_level.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "tests/support/allocation_watch.h"

namespace {

using tesk_audio::SeamLevel;

constexpr double kRateHz = 48000.0;
constexpr std::size_t kWindow = 960;
constexpr std::size_t kAround = 4'800;

// A tone whose level is a function of the milliseconds from the seam.
std::vector<float> Tone(const std::function<double(double)>& level, double fromMs, std::size_t frames,
                        unsigned channels = 1) {
  std::vector<float> samples;
  for (std::size_t i = 0; i < frames; ++i) {
    const double ms = fromMs + static_cast<double>(i) * 1000.0 / kRateHz;
    const double sample = level(ms) * std::sin(2.0 * M_PI * ms);
    samples.insert(samples.end(), channels, static_cast<float>(sample));
  }
  return samples;
}

double Steady(double) {
  return 0.5;
}
// What swells fifty times a second; and the same with more than half of a swell left out, or as much more.
double Beating(double ms) {
  return 0.35 + 0.15 * std::cos(2.0 * M_PI * ms / 20.0 + M_PI);
}
double LeftOut(double ms) {
  return ms > 0.0 && ms < 20.0 ? 0.6 * 0.2 + 0.4 * Beating(ms) : Beating(ms);
}
double Twice(double ms) {
  return ms > 0.0 && ms < 20.0 ? 0.6 * 0.5 + 0.4 * Beating(ms) : Beating(ms);
}

// The weakest and the loudest fiftieth of a second, in decibels.
std::pair<double, double> Range(const std::vector<float>& samples) {
  double weakest = 100.0;
  double loudest = -100.0;
  for (std::size_t from = 0; from + kWindow <= samples.size(); from += 12) {
    double power = 0.0;
    for (std::size_t i = from; i < from + kWindow; ++i) power += static_cast<double>(samples[i]) * samples[i];
    const double level = 10.0 * std::log10(power);
    weakest = std::min(weakest, level);
    loudest = std::max(loudest, level);
  }
  return {weakest, loudest};
}

float Loudest(const std::vector<float>& samples) {
  float loudest = 0.0F;
  for (const float sample : samples) loudest = std::max(loudest, std::fabs(sample));
  return loudest;
}

struct Seam {
  std::vector<float> around;
  std::vector<float> heard;  // a window before it and one after it
  bool isFitted = false;
};

// Music of one level as recorded, heard with another.
Seam Fit(const std::function<double(double)>& recorded, const std::function<double(double)>& played) {
  Seam seam{Tone(recorded, -50.0, kAround), Tone(played, -20.0, 2 * kWindow), false};
  SeamLevel level(kRateHz, 1);
  level.See(seam.heard.data(), kWindow);
  level.SetAround(seam.around.data());
  seam.isFitted = level.Fit(seam.heard.data() + kWindow, kWindow);
  for (std::size_t i = 0; seam.isFitted && i < kWindow; ++i) seam.heard[kWindow + i] *= level.GetGains()[i];
  return seam;
}

TEST(SeamLevel, IsAFiftiethOfASecondOnBothSidesAndATenthAround) {
  const SeamLevel level(kRateHz, 2);
  EXPECT_EQ(level.GetFrames(), kWindow);
  EXPECT_EQ(level.GetAroundFrames(), kAround);
}

TEST(SeamLevel, LeavesAloneWhatIsAsLoudAsTheMusicAround) {
  EXPECT_FALSE(Fit(Steady, Steady).isFitted);
  EXPECT_FALSE(Fit(Beating, Beating).isFitted);
  EXPECT_FALSE(Fit(Beating, [](double ms) { return Beating(ms + 7.0); }).isFitted);
}

TEST(SeamLevel, RaisesWhereASwellIsLeftOut) {
  const Seam seam = Fit(Beating, LeftOut);
  EXPECT_LT(Range(Tone(LeftOut, -20.0, 2 * kWindow)).first, Range(seam.around).first - 2.5);
  ASSERT_TRUE(seam.isFitted);
  EXPECT_GT(Range(seam.heard).first, Range(seam.around).first - 1.0);
  EXPECT_LT(Range(seam.heard).second, Range(seam.around).second + 0.5);
  EXPECT_LE(Loudest(seam.heard), Loudest(seam.around) * 1.001F);
}

TEST(SeamLevel, LowersWhereASwellComesTwice) {
  const Seam seam = Fit(Beating, Twice);
  EXPECT_GT(Range(Tone(Twice, -20.0, 2 * kWindow)).second, Range(seam.around).second + 1.5);
  ASSERT_TRUE(seam.isFitted);
  EXPECT_LT(Range(seam.heard).second, Range(seam.around).second + 0.6);
  EXPECT_GT(Range(seam.heard).first, Range(seam.around).first - 0.6);
}

TEST(SeamLevel, GoesOutFromTheSoundAndComesBackToItGently) {
  SeamLevel level(kRateHz, 1);
  const std::vector<float> played = Tone(LeftOut, -20.0, 2 * kWindow);
  const std::vector<float> recorded = Tone(Beating, -50.0, kAround);
  level.See(played.data(), kWindow);
  level.SetAround(recorded.data());
  ASSERT_TRUE(level.Fit(played.data() + kWindow, kWindow));
  const std::vector<float>& gains = level.GetGains();
  EXPECT_NEAR(gains.front(), 1.0F, 1e-3F);
  EXPECT_NEAR(gains.back(), 1.0F, 1e-3F);
  EXPECT_LE(*std::max_element(gains.begin(), gains.end()), 2.001F);
  for (std::size_t i = 1; i < gains.size(); ++i) EXPECT_NEAR(gains[i], gains[i - 1], 0.02F);
}

TEST(SeamLevel, BringsNothingBackThatTheMusicItselfLetsFade) {
  EXPECT_FALSE(Fit([](double ms) { return ms < 10.0 ? 0.5 : 0.05; }, LeftOut).isFitted) << "ends";
  EXPECT_FALSE(Fit([](double ms) { return ms < 0.0 ? 0.05 : 0.5; }, LeftOut).isFitted) << "begins";
  const auto silent = [](double) { return 0.0; };
  EXPECT_FALSE(Fit(silent, silent).isFitted);
}

TEST(SeamLevel, RemembersWhatWasHeardLastHoweverItCame) {
  const std::vector<float> heard = Tone(Beating, 0.0, 3'000, 2);
  for (const std::size_t piece : {7UL, 264UL, 959UL, 961UL, 3'000UL}) {
    SeamLevel level(kRateHz, 2);
    for (std::size_t from = 0; from < 3'000; from += piece) {
      level.See(heard.data() + 2 * from, std::min(piece, 3'000 - from));
    }
    EXPECT_TRUE(std::equal(heard.end() - 2 * kWindow, heard.end(), level.Before())) << piece;
  }
}

TEST(SeamLevel, AllocatesNothing) {
  SeamLevel level(kRateHz, 2);
  const std::vector<float> recorded = Tone(Beating, -50.0, kAround, 2);
  const std::vector<float> played = Tone(LeftOut, -20.0, 2 * kWindow, 2);
  const test_support::AllocationWatch watch;
  level.See(played.data(), kWindow);
  level.SetAround(recorded.data());
  EXPECT_TRUE(level.Fit(played.data() + 2 * kWindow, kWindow));
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
