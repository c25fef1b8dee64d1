// What a device hears through its gate when it takes over from a clock, period by period. The clock of this
// program moves when a test says so.
#include "reference_suite/audio/device/device_gate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "reference_suite/audio/output/monotonic_now.h"
#include "tests/reference_suite/audio/support/test_device.h"

namespace tesk_audio {

// In the place of the system's.
static long long now = 3'600'000'000'000;

long long MonotonicNow() {
  return now;
}

}  // namespace tesk_audio

namespace {

using tesk_audio::DeviceGate;
using tesk_audio::now;

constexpr double kRate = 48'000.0;
constexpr std::size_t kPeriod = 1024;
constexpr long long kMillisecond = 1'000'000;

// Frame n is n + 1. Has as many frames as have been rendered, of which it makes more when it is asked for
// them.
class Rendered : public tesk_audio::DeviceCallback {
 public:
  void Process(float* out, std::size_t frames) noexcept override {
    short_ += std::max(0LL, taken_ + static_cast<long long>(frames) - rendered_);
    for (std::size_t i = 0; i < frames; ++i) out[i] = static_cast<float>(++taken_);
  }
  bool IsReady(std::size_t frames) const noexcept override {
    const long long wanted = taken_ + static_cast<long long>(frames);
    if (wanted > rendered_) wanted_ = wanted;
    return wanted <= rendered_;
  }
  // What a render thread does between two periods.
  void Render() { rendered_ = std::max(rendered_, wanted_); }

  long long rendered_ = 0;
  long long taken_ = 0;
  long long short_ = 0;  // frames that were asked for before they were there
  mutable long long wanted_ = 0;
};

class Gate : public testing::Test {
 protected:
  Gate() : gate_(rendered_, 1, kRate, &device_) {}

  std::vector<float> Turn(std::size_t frames = kPeriod) {
    std::vector<float> heard(frames, -1.0F);
    gate_.Process(heard.data(), frames);
    return heard;
  }
  // Turns, period by period, until something is heard, now; returns its first frame, from 0.
  long long FirstHeard() {
    for (int turn = 0; turn < 100; ++turn) {
      const std::vector<float> heard = Turn();
      if (heard[0] != 0.0F) return static_cast<long long>(heard[0]) - 1;
      ++silentPeriods_;
      EXPECT_EQ(std::count(heard.begin(), heard.end(), 0.0F), static_cast<long long>(kPeriod));
      rendered_.Render();
      now += static_cast<long long>(kPeriod / kRate * 1e9);
    }
    return -1;
  }
  static double FramesBetween(long long start, long long end) {
    return static_cast<double>(end - start) * 1e-9 * kRate;
  }

  Rendered rendered_;
  TestDevice device_{kRate, 1, kPeriod};
  DeviceGate gate_;
  int silentPeriods_ = 0;
};

TEST_F(Gate, WhatWasDueBeforeIsPassedOverAndNoFrameBeforeItIsRendered) {
  rendered_.rendered_ = 700;
  const long long due = now - 28 * kMillisecond;
  gate_.Open(0, due);
  const long long first = FirstHeard();
  EXPECT_EQ(rendered_.short_, 0) << "a frame that is missing now is heard too late for ever";
  EXPECT_NEAR(static_cast<double>(first), FramesBetween(due, now), 2.0);
  EXPECT_GE(silentPeriods_, 1);
  EXPECT_LE(silentPeriods_, 2) << "what the next period needs is asked for before";
  EXPECT_EQ(Turn()[0], static_cast<float>(first + 1 + static_cast<long long>(kPeriod)))
      << "and then on, one by one";
}

TEST_F(Gate, WhenEverythingIsThereItIsHeardAtOnce) {
  rendered_.rendered_ = 100'000;
  const long long due = now - 28 * kMillisecond;
  gate_.Open(0, due);
  const long long first = FirstHeard();
  EXPECT_EQ(silentPeriods_, 0);
  EXPECT_NEAR(static_cast<double>(first), 28 * 48, 2.0);
}

// What was passed over has no part in the fade.
TEST_F(Gate, FadesInFromTheFirstFrameThatIsHeardOnAndThenLeavesEveryFrameAsItIs) {
  constexpr std::size_t kFade = 960;
  rendered_.rendered_ = 100'000;
  gate_.Open(kFade, now - 28 * kMillisecond);
  std::vector<float> heard;
  for (int turn = 0; turn < 5; ++turn) {
    const std::vector<float> more = Turn(256);
    heard.insert(heard.end(), more.begin(), more.end());
  }
  const long long first = rendered_.taken_ - static_cast<long long>(heard.size());
  EXPECT_NEAR(static_cast<double>(first), 28 * 48, 2.0);
  for (std::size_t i = 0; i < heard.size(); ++i) {
    const auto frame = static_cast<float>(first + static_cast<long long>(i) + 1);
    if (i + 1 < kFade) {
      ASSERT_NEAR(heard[i], frame * static_cast<float>(i + 1) / static_cast<float>(kFade), 0.01F) << i;
    } else {
      ASSERT_EQ(heard[i], frame) << i;
    }
  }
}

TEST_F(Gate, LostAgainBeforeAnythingIsHeardNothingIsLostTwice) {
  const long long due = now - 28 * kMillisecond;
  gate_.Open(0, due);
  Turn();
  EXPECT_EQ(gate_.GetDueTime(), due) << "a clock takes it from there";
  rendered_.rendered_ = 1'030;
  Turn();
  EXPECT_EQ(rendered_.taken_, 1'024);
  EXPECT_NEAR(static_cast<double>(gate_.GetDueTime() - due), 1'024 / kRate * 1e9, 2.0);
}

TEST_F(Gate, WhatSoundsLaterIsTakenEarlier) {
  rendered_.rendered_ = 100'000;
  device_.latency = 2'048;
  const long long due = now - 28 * kMillisecond;
  gate_.Open(0, due);
  const long long first = FirstHeard();
  EXPECT_NEAR(static_cast<double>(first), 28 * 48 + 2'048, 2.0) << "heard when it is due";
  // The next frame's.
  const double ahead = static_cast<double>(gate_.GetDueTime() - due) * 1e-9 * kRate;
  EXPECT_NEAR(ahead, static_cast<double>(first + static_cast<long long>(kPeriod)), 2.0);
}

TEST_F(Gate, WhileTheDeviceBeforeStillSoundsNothingIsTaken) {
  rendered_.rendered_ = 100'000;
  // What is due is so in half a second, of which this device needs a little.
  device_.latency = 480;
  const long long due = now + 500 * kMillisecond;
  gate_.Open(0, due);
  const long long start = now;
  long long first = -1;
  int calls = 0;
  for (; first < 0; ++calls) {
    // A call that comes late does not make the next one late.
    now = start + calls * kMillisecond + calls * 7 % 10 * 90'000;
    const std::vector<float> heard = Turn(48);
    if (heard[0] != 0.0F) first = static_cast<long long>(heard[0]) - 1;
  }
  const long long heardAt = start + (calls - 1) * kMillisecond;
  EXPECT_NEAR(static_cast<double>(first), FramesBetween(due, heardAt) + 480, 2.0);
  EXPECT_EQ(calls, 491) << "the first at once, and the last after 490 ms";
}

TEST(DeviceTimeline, ACallThatComesLateTellsOnlyThatItCameLate) {
  tesk_audio::DeviceTimeline timeline(kRate);
  const long long late[] = {0, 300'000, 2'000'000, 100'000, 5'000'000, 0, 700'000};
  long long due = 7'000 * kMillisecond;
  for (const long long each : late) {
    EXPECT_NEAR(static_cast<double>(timeline.Note(due + each, 480)), static_cast<double>(due), 2.0);
    due += 10 * kMillisecond;
  }
}

TEST(DeviceTimeline, ADeviceThatWasHeldUpAndGoesOnLaterIsBelievedInTheEnd) {
  tesk_audio::DeviceTimeline timeline(kRate);
  long long due = 7'000 * kMillisecond;
  for (int call = 0; call < 100; ++call, due += 10 * kMillisecond) timeline.Note(due, 480);
  due += 25 * kMillisecond;
  int doubting = 0;
  while (timeline.Note(due, 480) < due - 10 && doubting < 100) {
    ++doubting;
    due += 10 * kMillisecond;
  }
  EXPECT_GE(doubting, 16);
  EXPECT_LE(doubting, 32);
}

TEST_F(Gate, ALongIdleSoundServerTakesOverWhereTheShowIs) {
  rendered_.rendered_ = 200'000;
  const long long due = now - 2'000 * kMillisecond;
  gate_.Open(0, due);
  EXPECT_NEAR(static_cast<double>(FirstHeard()), 2'000 * 48, 2.0);
}

TEST_F(Gate, SilenceForADeviceThatIsTooFastIsCounted) {
  rendered_.rendered_ = 10'000'000;
  gate_.Open(0, 0);
  long long silent = 0;
  for (int turn = 0; turn < 1'000; ++turn) {
    const std::vector<float> heard = Turn();
    silent += std::count(heard.begin(), heard.end(), 0.0F);
  }
  EXPECT_GT(silent, 0);
  EXPECT_EQ(gate_.GetSilentFrames(), silent);
}

}  // namespace
