// The clock without sound.
#include "reference_suite/audio/device/null_device.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

using Clock = std::chrono::steady_clock;

class Counter : public tesk_audio::DeviceCallback {
 public:
  void Process(float* out, std::size_t frames) noexcept override {
    out[0] = out[frames * 2 - 1] = 1.0F;
    wrongSize = wrongSize || frames != 128;
    ++calls;
  }
  std::atomic<long long> calls{0};
  std::atomic<bool> wrongSize{false};
};

TEST(NullDevice, TellsItsFormat) {
  const tesk_audio::NullDevice device(44100.0, 2, 128);
  EXPECT_EQ(device.GetRateHz(), 44100.0);
  EXPECT_EQ(device.GetChannelCount(), 2U);
  EXPECT_EQ(device.GetPeriodFrames(), 128U);
  EXPECT_EQ(device.GetLatencyFrames(), 0U);
  EXPECT_EQ(tesk_audio::NullDevice(44100.0, 2, 0).GetPeriodFrames(), 1U);
}

TEST(NullDevice, TakesPeriodsAndNeverFasterThanItsRate) {
  Counter counter;
  tesk_audio::NullDevice device(96000.0, 2, 128);
  const auto start = Clock::now();
  device.Start(counter);
  for (const long long calls : {1LL, 10LL, 100LL, 500LL}) {
    ASSERT_TRUE(Await([&] { return counter.calls >= calls; }));
    const std::chrono::duration<double> time = Clock::now() - start;
    EXPECT_GE(time.count(), static_cast<double>(calls) * 128.0 / 96000.0);
  }
  device.Stop();
  EXPECT_FALSE(counter.wrongSize);
}

TEST(NullDevice, AfterStopNothingIsAskedAndItStartsAgain) {
  Counter counter;
  tesk_audio::NullDevice device(96000.0, 2, 128);
  device.Stop();
  for (int round = 0; round < 5; ++round) {
    const long long before = counter.calls;
    device.Start(counter);
    device.Start(counter);
    ASSERT_TRUE(Await([&] { return counter.calls > before + 3; }));
    device.Stop();
    const long long after = counter.calls;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(counter.calls, after);
  }
}

TEST(NullDevice, DeletedWhileItRunsItStops) {
  Counter counter;
  {
    tesk_audio::NullDevice device(96000.0, 2, 128);
    device.Start(counter);
  }
  const long long after = counter.calls;
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(counter.calls, after);
}

TEST(NullDevice, WhatIsDueOnlyLaterIsTakenThen) {
  Counter counter;
  const long long due = tesk_audio::MonotonicNow() + 60'000'000;
  tesk_audio::NullDevice device(96000.0, 2, 128, due);
  device.Start(counter);
  ASSERT_TRUE(Await([&] { return counter.calls > 0; }));
  EXPECT_GE(tesk_audio::MonotonicNow(), due);
}

TEST(NullDevice, ToStopItNeedNotBeWaitedForWhatIsDue) {
  Counter counter;
  const auto start = Clock::now();
  {
    tesk_audio::NullDevice device(96000.0, 2, 128, tesk_audio::MonotonicNow() + 3'600'000'000'000);
    device.Start(counter);
  }
  EXPECT_LT(Clock::now() - start, std::chrono::minutes(10));
  EXPECT_EQ(counter.calls, 0);
}

TEST(NullDevice, WithoutAThreadItSaysSo) {
  Counter counter;
  tesk_audio::NullDevice device(96000.0, 2, 128);
  const test_support::NoThreads none;
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { device.Start(counter); },
      "The null audio device cannot start its thread: Resource temporarily unavailable. Close other "
      "programs."));
}

}  // namespace
