#include "reference_suite/audio/stretch/raised_frames.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/allocation_watch.h"

namespace {

constexpr std::size_t kMost = 1000;

double Sine(double place) {
  return 0.5 * std::sin(2.0 * M_PI * 440.0 * place / 48000.0);
}

// Left a sine, right the same upside down.
std::vector<float> Sines(std::size_t from, std::size_t count) {
  std::vector<float> frames;
  for (std::size_t i = from; i < from + count; ++i) {
    frames.push_back(static_cast<float>(Sine(static_cast<double>(i))));
    frames.push_back(-frames.back());
  }
  return frames;
}

class Raised : public testing::TestWithParam<double> {};

TEST_P(Raised, FramesFollowTheSignalAndNoneIsLostInPiecesOfAnySize) {
  const double step = GetParam();
  tesk_audio::RaisedFrames raised(2, kMost);
  raised.Begin(step);
  std::vector<float> heard;
  std::vector<float> taken(2 * kMost);
  std::size_t put = 0;
  for (const std::size_t count : {1U, 3U, 17U, 1000U, 256U, 999U, 0U, 500U, 1000U, 1000U}) {
    raised.Put(Sines(put, count).data(), count);
    put += count;
    for (std::size_t got = 1; got > 0;) {
      got = raised.Take(taken.data(), 123);
      heard.insert(heard.end(), taken.begin(), taken.begin() + static_cast<std::ptrdiff_t>(2 * got));
    }
  }
  const double all = (static_cast<double>(put) - tesk_audio::RaisedFrames::kKeptBack) / step;
  EXPECT_NEAR(static_cast<double>(heard.size() / 2), all, 1.0);
  for (std::size_t i = 20; i < heard.size() / 2; ++i) {
    ASSERT_NEAR(heard[2 * i], Sine(step * static_cast<double>(i)), 2e-3) << i;
    ASSERT_EQ(heard[2 * i + 1], -heard[2 * i]) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Steps, Raised, testing::Values(1.0595, 1.1225, 1.5, 2.0, 4.0, 5.3));

TEST(RaisedFrames, ForgetWhatWasPutInBeforeABeginning) {
  tesk_audio::RaisedFrames raised(2, kMost);
  raised.Begin(1.5);
  raised.Put(std::vector<float>(2 * kMost, 1.0F).data(), kMost);
  raised.Begin(2.0);
  std::vector<float> taken(2 * kMost);
  EXPECT_EQ(raised.Take(taken.data(), kMost), 0U);
  raised.Put(std::vector<float>(2 * kMost, 0.0F).data(), kMost);
  const std::size_t got = raised.Take(taken.data(), kMost);
  EXPECT_GT(got, 480U);
  for (std::size_t i = 0; i < 2 * got; ++i) ASSERT_EQ(taken[i], 0.0F) << i;
}

TEST(RaisedFrames, AskTheAllocatorForNothing) {
  tesk_audio::RaisedFrames raised(2, kMost);
  const std::vector<float> sound = Sines(0, kMost);
  std::vector<float> taken(2 * kMost);
  raised.Begin(1.3);
  const test_support::AllocationWatch watch;
  for (int i = 0; i < 100; ++i) {
    raised.Put(sound.data(), kMost);
    while (raised.Take(taken.data(), kMost) > 0) {
    }
  }
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
