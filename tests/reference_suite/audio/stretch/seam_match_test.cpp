#include "reference_suite/audio/stretch/seam_match.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using tesk_audio::FindSeam;
using tesk_audio::SeamMatch;

std::vector<float> Sine(double hertz, double from, std::size_t frames) {
  std::vector<float> samples;
  for (std::size_t i = 0; i < frames; ++i) {
    const double time = (from + static_cast<double>(i)) / 48000.0;
    samples.push_back(static_cast<float>(std::sin(2.0 * M_PI * hertz * time)));
  }
  return samples;
}

TEST(FindSeam, FindsWhereTwoSoundsGoOnFromOneAnother) {
  // The incoming one is 31 frames behind: 31 more than the reach have to be passed over.
  const auto outgoing = Sine(440.0, 1000.0, 240);
  const auto incoming = Sine(440.0, 1000.0 - 31.0 - 48.0, 240 + 96);
  const SeamMatch match = FindSeam(outgoing.data(), incoming.data(), 240, 1, 48, 48);
  EXPECT_NEAR(static_cast<double>(match.lag), 79.0, 2.0);
  EXPECT_GT(match.correlation, 0.97);
}

TEST(FindSeam, GoesFurtherAsideOnlyForSoundsThatWouldCancelEachOther) {
  const auto outgoing = Sine(220.0, 1000.0, 240);
  const auto opposed = Sine(220.0, 1000.0 - 109.0 - 120.0, 240 + 240);
  EXPECT_GT(FindSeam(outgoing.data(), opposed.data(), 240, 1, 120, 48).correlation, 0.9);
  EXPECT_LT(FindSeam(outgoing.data(), opposed.data() + 72, 240, 1, 48, 48).correlation, 0.0);
  const auto fitting = Sine(220.0, 1000.0 - 10.0 - 120.0, 240 + 240);
  EXPECT_NEAR(static_cast<double>(FindSeam(outgoing.data(), fitting.data(), 240, 1, 120, 48).lag), 130.0,
              10.0);
}

TEST(FindSeam, InSilenceNothingIsMoved) {
  const std::vector<float> silence(1000, 0.0F);
  const SeamMatch match = FindSeam(silence.data(), silence.data(), 240, 1, 120, 48);
  EXPECT_EQ(match.lag, 120U);
  EXPECT_EQ(match.correlation, 0.0);
}

TEST(FindSeam, HearsAllChannels) {
  // The left channel is silent; what fits is in the right one.
  std::vector<float> outgoing(480);
  std::vector<float> incoming(2 * (240 + 96));
  const auto out = Sine(440.0, 1000.0, 240);
  const auto in = Sine(440.0, 1000.0 - 20.0 - 48.0, 240 + 96);
  for (std::size_t i = 0; i < out.size(); ++i) outgoing[2 * i + 1] = out[i];
  for (std::size_t i = 0; i < in.size(); ++i) incoming[2 * i + 1] = in[i];
  EXPECT_NEAR(static_cast<double>(FindSeam(outgoing.data(), incoming.data(), 240, 2, 48, 48).lag), 68.0, 2.0);
}

TEST(Correlation, OfASoundWithItselfAndItsOpposite) {
  const auto one = Sine(440.0, 0.0, 500);
  auto other = one;
  for (float& sample : other) sample *= -0.1F;
  EXPECT_NEAR(tesk_audio::Correlation(one.data(), one.data(), 500), 1.0, 1e-6);
  EXPECT_NEAR(tesk_audio::Correlation(one.data(), other.data(), 500), -1.0, 1e-6);
}

}  // namespace
