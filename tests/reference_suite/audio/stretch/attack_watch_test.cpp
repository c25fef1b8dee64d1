#include "reference_suite/audio/stretch/attack_watch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using tesk_audio::AttackWatch;

constexpr double kRateHz = 48000.0;

// How often it sees an attack, asked for 256 frames at a time.
int Seen(const std::vector<float>& frames, unsigned channels = 1) {
  AttackWatch watch(kRateHz, channels);
  int seen = 0;
  const std::size_t part = 256 * channels;
  for (std::size_t at = 0; at + part <= frames.size(); at += part)
    seen += watch.See(&frames[at], 256) ? 1 : 0;
  return seen;
}

std::vector<float> Sines(const std::vector<double>& hertz, double level) {
  std::vector<float> frames(96'000);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    double sum = 0.0;
    for (const double each : hertz) sum += std::sin(2.0 * M_PI * each * static_cast<double>(i) / kRateHz);
    frames[i] = static_cast<float>(level * sum);
  }
  return frames;
}

TEST(AttackWatch, SeesNoneInTonesThatGoOnBeatOrSwell) {
  EXPECT_EQ(Seen(Sines({30.0}, 0.5)), 0);
  EXPECT_EQ(Seen(Sines({330.0}, 0.5)), 0);
  EXPECT_EQ(Seen(Sines({440.0, 443.0}, 0.3)), 0);
  EXPECT_EQ(Seen(Sines({440.0, 455.0}, 0.3)), 0);
  std::vector<float> swelling = Sines({220.0}, 0.5);
  for (std::size_t i = 0; i < swelling.size(); ++i) swelling[i] *= static_cast<float>(i) / 96'000.0F;
  EXPECT_EQ(Seen(swelling), 0);
}

TEST(AttackWatch, SeesNoneInNoiseNorInSilence) {
  std::mt19937 random(1);
  std::normal_distribution<float> normal(0.0F, 0.1F);
  std::vector<float> noise(480'000);
  for (float& frame : noise) frame = normal(random);
  EXPECT_EQ(Seen(noise), 0);
  EXPECT_EQ(Seen(std::vector<float>(48'000, 0.0F)), 0);
}

TEST(AttackWatch, SeesAClickOnceInSilenceAndUnderATone) {
  std::vector<float> click(48'000, 0.0F);
  click[20'000] = 0.1F;
  EXPECT_EQ(Seen(click), 1);
  std::vector<float> tone = Sines({220.0}, 0.3);
  tone[20'000] += 0.9F;
  EXPECT_EQ(Seen(tone), 1);
}

TEST(AttackWatch, SeesAHighSoundUnderALowOneThatIsFarLouder) {
  std::vector<float> frames = Sines({60.0}, 0.6);
  for (std::size_t i = 30'000; i < 31'000; ++i) frames[i] += (i % 2 == 0 ? 0.05F : -0.05F);
  EXPECT_EQ(Seen(frames), 1);
}

TEST(AttackWatch, SeesAnAttackInTheFramesThatEndWithIt) {
  AttackWatch watch(kRateHz, 1);
  const std::vector<float> silence(4'096, 0.0F);
  watch.See(silence.data(), silence.size());
  std::vector<float> frames(300, 0.0F);
  frames.back() = 0.5F;
  EXPECT_TRUE(watch.See(frames.data(), frames.size()));
}

TEST(AttackWatch, TakesTheBeginningForNone) {
  AttackWatch watch(kRateHz, 1);
  const std::vector<float> tone = Sines({330.0}, 0.5);
  EXPECT_FALSE(watch.See(tone.data(), 500));
  watch.See(tone.data() + 500, 4'000);
  watch.Forget(1.0);
  EXPECT_FALSE(watch.See(tone.data(), 500));
}

TEST(AttackWatch, SeesWhatIsOfOppositeSignInTwoChannels) {
  std::vector<float> frames(96'000, 0.0F);
  frames[40'000] = 0.5F;
  frames[40'001] = -0.5F;
  EXPECT_EQ(Seen(frames, 2), 1);
}

TEST(AttackWatch, SeesWhatOneChannelOfTwoPlays) {
  std::vector<float> frames(96'000, 0.0F);
  frames[40'001] = 0.5F;
  EXPECT_EQ(Seen(frames, 2), 1);
}

}  // namespace
