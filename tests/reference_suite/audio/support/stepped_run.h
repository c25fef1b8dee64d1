#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/reference_suite/audio/support/test_device.h"

// A live output with a scripted player, on a device and by a clock that the test turns: after every step the
// render thread has done all that there is to do at that time, as it would on an idle machine. One channel at
// 48 000 frames a second, without fades.
//
// Units      frames, of the song and of time: 48 are a millisecond.
class SteppedRun {
 public:
  static constexpr long long kStep = 16;

  SteppedRun(Songs songs, unsigned period, double aheadMs = 15.0)
      : player(std::move(songs)), period_(period) {
    tesk_audio::OutputSettings settings;
    settings.aheadMs = aheadMs;
    settings.crossfadeMs = 0.0;
    settings.fadeMs = 0.0;
    auto owned = std::make_unique<TestDevice>(48'000.0, 1, period);
    device_ = owned.get();
    output = std::make_unique<tesk_audio::LiveSampleOutput>(player, std::move(owned), settings,
                                                            [this] { return now_ * 1'000'000 / 48; });
    player.SetOutput(output.get());
  }
  ~SteppedRun() { device_->Spin(true); }

  void Play() {
    player.SetPlays(true);
    output->Start();
    EXPECT_TRUE(Settle_());
  }

  // Time goes on by a step, which divides a period. When one begins the device takes it first; it sounds from
  // now on.
  void Step(long long frames = kStep) {
    now_ += frames;
    if (now_ % period_ == 0) {
      const std::vector<float> taken = device_->Turn(period_);
      heard_.insert(heard_.end(), taken.begin(), taken.end());
    } else if (heard_.empty()) {
      heard_.resize(static_cast<std::size_t>(period_));
    }
    EXPECT_TRUE(Settle_());
  }

  // Up to there, in longer steps as far as they go.
  void StepUntil(long long time) {
    while (now_ % kLongStep != 0 && now_ < time) Step();
    while (now_ + kLongStep <= time) Step(kLongStep);
    while (now_ < time) Step();
  }

  long long Now() const { return now_; }
  // When this sample is to sound, or has; -1 when the device has not taken it yet.
  long long SoundsAt(float sample) const {
    for (std::size_t i = 0; i < heard_.size(); ++i) {
      if (heard_[i] == sample) return static_cast<long long>(i);
    }
    return -1;
  }
  // What the device has taken, from time 0 on.
  const std::vector<float>& Heard() const { return heard_; }

  TestDevice& Device() { return *device_; }

  ScriptedPlayer player;
  std::unique_ptr<tesk_audio::LiveSampleOutput> output;

 private:
  static constexpr long long kLongStep = 64;

  // Until the render thread has looked twice and found nothing to do, or sleeps.
  bool Settle_() {
    return Await([this] {
      if (!output->GetOutputIsRunning()) return true;
      const long long planned = player.Planned();
      const long long looks = device_->GetLooks();
      return Await([&] {
               return device_->GetLooks() >= looks + 2 || player.Planned() != planned ||
                      !output->GetOutputIsRunning();
             }) &&
             player.Planned() == planned;
    });
  }

  const long long period_;
  TestDevice* device_ = nullptr;  // the output's
  std::atomic<long long> now_{0};
  std::vector<float> heard_;
};
