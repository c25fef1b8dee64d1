#include "reference_suite/audio/stretch/in_between_reader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/reference_suite/audio/support/sounding_source.h"

namespace {

// Left a sine, right its cosine.
std::vector<float> Sines(double hertz, std::size_t frames) {
  std::vector<float> samples;
  for (std::size_t i = 0; i < frames; ++i) {
    const double angle = 2.0 * M_PI * hertz * static_cast<double>(i) / 48000.0;
    samples.push_back(static_cast<float>(std::sin(angle)));
    samples.push_back(static_cast<float>(std::cos(angle)));
  }
  return samples;
}

TEST(InBetweenReader, FollowsASignalBetweenItsFrames) {
  for (const double hertz : {100.0, 1000.0, 10'000.0, 15'000.0}) {
    SoundingSource source(Sines(hertz, 4000), 2);
    tesk_audio::InBetweenReader reader(source, 2, 1000);
    std::vector<float> read(2000);
    const double step = std::exp2(-7.0 / 12.0);
    reader.Read(500.3, step, 1'000'000, read.data(), 1000);
    for (std::size_t i = 0; i < 1000; ++i) {
      const double angle = 2.0 * M_PI * hertz * (500.3 + step * static_cast<double>(i)) / 48000.0;
      ASSERT_NEAR(read[2 * i], std::sin(angle), 2e-3) << hertz << " Hz, frame " << i;
      ASSERT_NEAR(read[2 * i + 1], std::cos(angle), 2e-3) << hertz << " Hz, frame " << i;
    }
  }
}

TEST(InBetweenReader, FurtherApartItKeepsWhatCanBeToldAndLeavesOutTheRest) {
  const double step = std::exp2(7.0 / 12.0);
  const auto read = [step](double hertz) {
    SoundingSource source(Sines(hertz, 4000), 2);
    tesk_audio::InBetweenReader reader(source, 2, 2000);
    std::vector<float> frames(2000);
    reader.Read(500.3, step, 1'000'000, frames.data(), 1000);
    return frames;
  };
  for (const double hertz : {100.0, 1000.0, 10'000.0}) {
    const std::vector<float> frames = read(hertz);
    for (std::size_t i = 0; i < 1000; ++i) {
      const double angle = 2.0 * M_PI * hertz * (500.3 + step * static_cast<double>(i)) / 48000.0;
      ASSERT_NEAR(frames[2 * i], std::sin(angle), 3e-3) << hertz << " Hz, frame " << i;
      ASSERT_NEAR(frames[2 * i + 1], std::cos(angle), 3e-3) << hertz << " Hz, frame " << i;
    }
  }
  // Above half the rate at which it is read: 16 kHz.
  for (const double hertz : {20'500.0, 22'000.0}) {
    for (const float sample : read(hertz)) ASSERT_LT(std::fabs(sample), 2e-2F) << hertz << " Hz";
  }
}

TEST(InBetweenReader, OnAFrameItGivesThatFrame) {
  SoundingSource source({0.0F, 0.25F, -0.5F, 0.75F, 0.0F}, 1);
  tesk_audio::InBetweenReader reader(source, 1, 10);
  std::vector<float> read(5);
  reader.Read(0.0, 1.0, 100, read.data(), 5);
  for (std::size_t i = 0; i < 5; ++i)
    EXPECT_NEAR(read[i], std::vector<float>({0.0F, 0.25F, -0.5F, 0.75F, 0.0F})[i], 1e-6F);
}

TEST(InBetweenReader, ReadsTheSameInPiecesAndAtOnceAlsoBeforeTheSong) {
  SoundingSource source(Sines(440.0, 1000), 2);
  tesk_audio::InBetweenReader reader(source, 2, 1000);
  std::vector<float> whole(2000);
  reader.Read(-100.25, 0.5, 1'000'000, whole.data(), 1000);
  std::vector<float> pieces(2000);
  for (std::size_t i = 0; i < 1000; i += 125) {
    reader.Read(-100.25 + 0.5 * static_cast<double>(i), 0.5, 1'000'000, pieces.data() + 2 * i, 125);
  }
  EXPECT_EQ(whole, pieces);
}

TEST(InBetweenReader, BehindTheEndTheSongIsSilent) {
  SoundingSource source(std::vector<float>(1000, 1.0F), 1);
  tesk_audio::InBetweenReader reader(source, 1, 200);
  std::vector<float> read(200);
  reader.Read(500.0, 0.5, 550, read.data(), 200);
  EXPECT_NEAR(read[20], 1.0F, 1e-3F);
  EXPECT_NEAR(read[99], 0.5F, 0.3F) << "at the end itself";
  for (std::size_t i = 134; i < 200; ++i) EXPECT_EQ(read[i], 0.0F) << i;
}

}  // namespace
