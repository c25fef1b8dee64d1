// What a device of another rate hears, turned by hand.
#include "reference_suite/audio/device/rate_bridge.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/test_device.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_audio::RateBridge;

constexpr double kRate = 48'000.0;
constexpr double kDeviceRate = 44'100.0;

// Frame n is n / 2^20: a slope whose height tells where it is. Ready until it is told otherwise.
class Slope : public tesk_audio::DeviceCallback {
 public:
  void Process(float* out, std::size_t frames) noexcept override {
    sched_param parameters{};
    int found = 0;
    ::pthread_getschedparam(::pthread_self(), &found, &parameters);
    policy = found;
    for (std::size_t i = 0; i < frames; ++i) out[i] = std::ldexp(static_cast<float>(given++), -20);
    waitsFor = 0;
  }
  bool IsReady(std::size_t frames) const noexcept override {
    if (!ready) waitsFor = frames;
    return ready;
  }
  std::atomic<int> policy{-1};
  std::atomic<bool> ready{true};
  std::atomic<long long> given{0};
  mutable std::atomic<std::size_t> waitsFor{0};
};

class Bridge : public testing::Test {
 protected:
  Bridge() {
    auto owned = std::make_unique<TestDevice>(kDeviceRate, 1, 256);
    device_ = owned.get();
    bridge_ = std::make_unique<RateBridge>(std::move(owned), kRate);
  }
  // A bridge that stands still holds a period of the device and five milliseconds.
  bool IsFull() {
    long long before = -1;
    return Await([&] {
      const long long now = std::exchange(before, slope_.given.load());
      return before > 600 && before == now && Held() >= 256 + 220;
    });
  }
  double Held() const { return bridge_->GetLatencyFrames() * kDeviceRate / kRate; }

  Slope slope_;
  TestDevice* device_ = nullptr;
  std::unique_ptr<RateBridge> bridge_;
};

TEST_F(Bridge, ItsLatencyIsAllThatLiesBetween) {
  bridge_->Start(slope_);
  double mostHeld = 0.0;
  for (int turn = 0; turn < 40; ++turn) {
    ASSERT_TRUE(IsFull());
    mostHeld = std::max(mostHeld, Held());
    device_->Turn(256);
  }
  ASSERT_TRUE(IsFull());
  EXPECT_LT(mostHeld, 0.03 * kDeviceRate) << "go is heard as much later";
  // The next frame that the device takes, and how far behind the last that was given it is.
  const double latency = bridge_->GetLatencyFrames();
  const double given = static_cast<double>(slope_.given);
  const double next = std::ldexp(static_cast<double>(device_->Turn(256)[0]), 20);
  EXPECT_NEAR(given - next, latency, 3.0) << "what the converter holds counts as well";
}

TEST_F(Bridge, ItAsksOnARealTimeThreadWhereTheSystemGrantsIt) {
  sched_param parameters{};
  parameters.sched_priority = 60;
  const int granted = ::sched_setscheduler(0, SCHED_FIFO, &parameters) == 0 ? SCHED_FIFO : SCHED_OTHER;
  parameters.sched_priority = 0;
  ::sched_setscheduler(0, SCHED_OTHER, &parameters);
  bridge_->Start(slope_);
  ASSERT_TRUE(Await([&] { return slope_.given > 0; }));
  EXPECT_EQ(slope_.policy, granted);
}

TEST_F(Bridge, WhatIsMissingIsSilenceAndCounted) {
  bridge_->Start(slope_);
  ASSERT_TRUE(IsFull());
  slope_.ready = false;
  // It waits as long as it has something in hand, and does not pass silence on before there is need.
  ASSERT_TRUE(Await([&] {
    if (slope_.waitsFor == 0) device_->Turn(16);
    return slope_.waitsFor > 0;
  }));
  EXPECT_EQ(bridge_->GetSilentFrames(), 0);
  std::vector<float> heard = device_->Turn(8'192);
  const auto silent = std::count(heard.begin(), heard.end(), 0.0F);
  ASSERT_GT(silent, 0);
  EXPECT_NEAR(static_cast<double>(bridge_->GetSilentFrames()),
              static_cast<double>(silent) * kRate / kDeviceRate, 1.0);
}

TEST_F(Bridge, AThreadThatCannotBeStartedIsTold) {
  const test_support::NoThreads none;
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { bridge_->Start(slope_); },
      "The conversion for the audio device cannot start its thread: Resource temporarily unavailable. Close "
      "other "
      "programs."));
  EXPECT_FALSE(device_->IsStarted());
}

}  // namespace
