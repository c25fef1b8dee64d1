#include "reference_suite/audio/stretch/turned_back.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using tesk_audio::TurnedBack;

constexpr double kRateHz = 48000.0;
constexpr long long kTurn = 1'000;
constexpr std::size_t kMost = 500;

// A low tone, and the same upside down; no number where it must not be looked.
class Song : public tesk_audio::FrameSource {
 public:
  void ReadAt(long long index, float* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i, ++index) {
      *frames++ = index < end ? Tone(index) : NAN;
      *frames++ = index < end ? -Tone(index) : NAN;
    }
  }
  static float Tone(long long index) {
    return static_cast<float>(0.5 * std::sin(2.0 * M_PI * 110.0 * static_cast<double>(index) / kRateHz));
  }

  long long end = kTurn;
};

std::vector<float> Read(TurnedBack& turned, long long index, std::size_t count) {
  std::vector<float> frames(2 * count);
  turned.ReadAt(index, frames.data(), count);
  return frames;
}

TEST(TurnedBack, IsTheSongBeforeTheTurn) {
  Song song;
  TurnedBack turned(song, kRateHz, 2, kMost);
  turned.TurnAt(kTurn);
  const std::vector<float> frames = Read(turned, 600, 400);
  for (std::size_t i = 0; i < 400; ++i) {
    ASSERT_EQ(frames[2 * i], Song::Tone(600 + static_cast<long long>(i))) << i;
    ASSERT_EQ(frames[2 * i + 1], -Song::Tone(600 + static_cast<long long>(i))) << i;
  }
}

TEST(TurnedBack, GoesOnBehindItWithoutAKinkAndLooksAtNothingThere) {
  Song song;
  TurnedBack turned(song, kRateHz, 2, kMost);
  turned.TurnAt(kTurn);
  const std::vector<float> frames = Read(turned, 800, 500);
  double bend = 0.0;
  for (std::size_t i = 2; i < 500; ++i) {
    const double here = static_cast<double>(frames[2 * i]) - 2.0 * static_cast<double>(frames[2 * i - 2]) +
                        static_cast<double>(frames[2 * i - 4]);
    bend = std::max(bend, std::fabs(here));
    ASSERT_EQ(frames[2 * i + 1], -frames[2 * i]) << i;
  }
  const double own = 0.5 * std::pow(2.0 * M_PI * 110.0 / kRateHz, 2.0);
  EXPECT_LT(bend, 4.0 * own);
}

TEST(TurnedBack, IsTheSongBackwardsFurtherBehind) {
  Song song;
  TurnedBack turned(song, kRateHz, 2, kMost);
  turned.TurnAt(kTurn);
  const std::vector<float> frames = Read(turned, kTurn + 120, 200);
  for (std::size_t i = 0; i < 200; ++i)
    ASSERT_EQ(frames[2 * i], Song::Tone(kTurn - 2 - 120 - static_cast<long long>(i))) << i;
}

TEST(TurnedBack, IsTheSameReadInPieces) {
  Song song;
  TurnedBack turned(song, kRateHz, 2, kMost);
  turned.TurnAt(kTurn);
  const std::vector<float> whole = Read(turned, 900, 300);
  std::vector<float> pieces;
  for (const std::size_t count : {97U, 1U, 2U, 100U, 100U}) {
    const std::vector<float> piece = Read(turned, 900 + static_cast<long long>(pieces.size() / 2), count);
    pieces.insert(pieces.end(), piece.begin(), piece.end());
  }
  EXPECT_EQ(pieces, whole);
}

TEST(TurnedBack, IsTheSongAgainWhenItTurnsNowhere) {
  Song song;
  song.end = 2'000;
  TurnedBack turned(song, kRateHz, 2, kMost);
  turned.TurnAt(kTurn);
  turned.TurnAt(TurnedBack::kNowhere);
  EXPECT_EQ(Read(turned, kTurn + 10, 1).at(0), Song::Tone(kTurn + 10));
}

}  // namespace
