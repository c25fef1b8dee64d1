#include "reference_suite/audio/output/cross_fade.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/allocation_watch.h"

namespace {

TEST(CrossFade, KeepsThePowerOfUnrelatedSignals) {
  // One source in the left channel, the other in the right.
  tesk_audio::CrossFade fade(2, 100);
  for (std::size_t i = 0; i < 100; ++i) {
    fade.Outgoing()[2 * i] = 0.0F;
    fade.Outgoing()[2 * i + 1] = 1.0F;
  }
  fade.Begin();
  std::vector<float> frames(200);
  for (std::size_t i = 0; i < 100; ++i) frames[2 * i] = 1.0F;
  fade.Apply(frames.data(), 100);
  for (std::size_t i = 0; i < 100; ++i) {
    EXPECT_NEAR(frames[2 * i] * frames[2 * i] + frames[2 * i + 1] * frames[2 * i + 1], 1.0F, 1e-6F) << i;
    if (i > 0) {
      EXPECT_GT(frames[2 * i], frames[2 * i - 2]);
      EXPECT_LT(frames[2 * i + 1], frames[2 * i - 1]);
    }
  }
  EXPECT_FALSE(fade.IsActive());
}

TEST(CrossFade, KeepsTheLevelOfSoundsThatAreAlike) {
  for (const double degrees : {0.0, 30.0, 60.0, 90.0}) {
    const double phase = degrees / 180.0 * M_PI;
    tesk_audio::CrossFade fade(1, 0, 4800);
    std::vector<float> frames(4800);
    for (std::size_t i = 0; i < 4800; ++i) {
      fade.Outgoing()[i] = static_cast<float>(std::sin(0.1 * static_cast<double>(i)));
      frames[i] = static_cast<float>(std::sin(0.1 * static_cast<double>(i) + phase));
    }
    fade.Begin(4800, std::cos(phase));
    fade.Apply(frames.data(), 4800);
    for (std::size_t i = 0; i + 63 < 4800; i += 63) {
      const float loudest = *std::max_element(frames.begin() + i, frames.begin() + i + 63);
      EXPECT_NEAR(loudest, 1.0F, 0.02F) << degrees << " degrees, frame " << i;
    }
  }
}

// By no more than they take from each other: half the power, in the middle.
TEST(CrossFade, LeavesSoundsThatWeakenEachOtherAtTheSumOfBoth) {
  tesk_audio::CrossFade fade(1, 0, 4800);
  const double phase = 2.0 / 3.0 * M_PI;
  std::vector<float> frames(4800);
  for (std::size_t i = 0; i < 4800; ++i) {
    fade.Outgoing()[i] = static_cast<float>(std::sin(0.1 * static_cast<double>(i)));
    frames[i] = static_cast<float>(std::sin(0.1 * static_cast<double>(i) + phase));
  }
  fade.Begin(4800, std::cos(phase));
  fade.Apply(frames.data(), 4800);
  const auto loudest = [&](std::size_t at) {
    return *std::max_element(frames.begin() + static_cast<std::ptrdiff_t>(at),
                             frames.begin() + static_cast<std::ptrdiff_t>(at) + 63);
  };
  EXPECT_NEAR(loudest(2'400 - 31), std::sqrt(0.5F), 0.02F);
  EXPECT_NEAR(loudest(0), 1.0F, 0.02F);
  EXPECT_NEAR(loudest(4'737), 1.0F, 0.02F);
}

// A tone of 41 Hz that meets itself upside down, in ten milliseconds: kept at its level, it would bend 40
// times as much as by itself.
TEST(CrossFade, BendsAToneThatIsOpposedToItselfNoMoreThanItHasTo) {
  constexpr double kStep = 2.0 * M_PI * 41.2 / 48000.0;
  constexpr std::size_t kFrames = 480;
  double worst = 0.0;
  for (double phase = 0.0; phase < 2.0 * M_PI; phase += 0.1) {
    tesk_audio::CrossFade fade(1, 0, kFrames);
    std::vector<float> frames(2 * kFrames);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      frames[i] = static_cast<float>(-std::sin(kStep * static_cast<double>(i) + phase));
      if (i < kFrames) fade.Outgoing()[i] = -frames[i];
    }
    const double foretold = fade.BendWith(frames.data(), kFrames, -1.0, kFrames);
    fade.Begin(kFrames, -1.0);
    fade.Apply(frames.data(), kFrames);
    double heard = 0.0;
    for (std::size_t i = 2; i < kFrames; ++i) {
      heard = std::max(heard,
                       std::fabs(static_cast<double>(frames[i]) - 2.0 * static_cast<double>(frames[i - 1]) +
                                 static_cast<double>(frames[i - 2])));
    }
    EXPECT_NEAR(foretold, heard, 0.01 * kStep * kStep) << phase;
    worst = std::max(worst, heard);
  }
  EXPECT_LT(worst, 4.0 * kStep * kStep);
}

TEST(CrossFade, ATailFadesOutUnderWhatComesInAtItsFullLevel) {
  tesk_audio::CrossFade fade(1, 10, 20);
  std::fill_n(fade.Outgoing(), 20, 1.0F);
  fade.BeginTail(20);
  std::vector<float> frames(30, 0.5F);
  fade.Apply(frames.data(), 30);
  EXPECT_NEAR(frames[0], 1.5F, 0.01F);
  EXPECT_NEAR(frames[19], 0.5F, 0.01F);
  EXPECT_EQ(frames[20], 0.5F);
}

TEST(CrossFade, TakesGainsOnForAsLongAsTheyLast) {
  const auto faded = [](const std::vector<float>& gains) {
    tesk_audio::CrossFade fade(1, 10, 30);
    std::fill_n(fade.Outgoing(), 30, 1.0F);
    fade.Begin(10, 1.0);
    if (!gains.empty()) fade.Scale(gains.data(), gains.size());
    std::vector<float> frames(40, 1.0F);
    fade.Apply(frames.data(), 25);
    fade.Apply(frames.data() + 25, 15);
    EXPECT_FALSE(fade.IsActive());
    return frames;
  };
  const std::vector<float> plain = faded({});
  const std::vector<float> scaled = faded(std::vector<float>(30, 0.5F));
  for (std::size_t i = 0; i < 40; ++i) EXPECT_NEAR(scaled[i], i < 30 ? 0.5F * plain[i] : 1.0F, 1e-6F) << i;
  const std::vector<float> shortly = faded(std::vector<float>(5, 0.5F));
  for (std::size_t i = 0; i < 40; ++i) EXPECT_NEAR(shortly[i], (i < 5 ? 0.5F : 1.0F) * plain[i], 1e-6F) << i;
}

TEST(CrossFade, CanBeLookedAtBeforeItIsHeard) {
  tesk_audio::CrossFade fade(2, 10);
  std::fill_n(fade.Outgoing(), 20, 0.1F);
  fade.Begin();
  std::vector<float> looked(30, 0.7F);
  fade.Preview(looked.data(), 15);
  std::vector<float> heard(30, 0.7F);
  fade.Apply(heard.data(), 15);
  EXPECT_EQ(looked, heard);
}

TEST(CrossFade, LeavesEverySampleAloneBeforeAndAfter) {
  tesk_audio::CrossFade fade(1, 10);
  std::vector<float> frames(30, 0.7F);
  fade.Apply(frames.data(), 30);
  EXPECT_EQ(frames, std::vector<float>(30, 0.7F));
  std::fill_n(fade.Outgoing(), 10, 0.1F);
  fade.Begin();
  EXPECT_TRUE(fade.IsActive());
  fade.Apply(frames.data(), 30);
  EXPECT_EQ(std::count(frames.begin(), frames.end(), 0.7F), 20);
  EXPECT_EQ(frames[10], 0.7F);
}

TEST(CrossFade, CanceledItIsGone) {
  tesk_audio::CrossFade fade(1, 10);
  std::fill_n(fade.Outgoing(), 10, 0.1F);
  fade.Begin();
  fade.Cancel();
  std::vector<float> frames(10, 0.7F);
  fade.Apply(frames.data(), 10);
  EXPECT_EQ(frames, std::vector<float>(10, 0.7F));
}

TEST(CrossFade, OfNoLengthDoesNothing) {
  tesk_audio::CrossFade fade(2, 0);
  fade.Begin();
  EXPECT_FALSE(fade.IsActive());
  std::vector<float> frames(10, 0.7F);
  fade.Apply(frames.data(), 5);
  EXPECT_EQ(frames, std::vector<float>(10, 0.7F));
}

TEST(CrossFade, AllocatesNothing) {
  tesk_audio::CrossFade fade(2, 240);
  std::vector<float> frames(600, 0.5F);
  const test_support::AllocationWatch watch;
  for (int i = 0; i < 10; ++i) {
    std::fill_n(fade.Outgoing(), 480, 0.1F);
    fade.Begin();
    fade.Apply(frames.data(), 100);
  }
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
