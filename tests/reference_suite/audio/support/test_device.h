#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "reference_suite/audio/device/device.h"
#include "suite/audio/errors.h"

// A device without hardware and without a clock: turned by hand, or by a thread of its own as fast as the
// machine allows. Keeps what it took.
//
// Threads    Turn while it does not spin, on the test's thread; the rest any.
class TestDevice : public tesk_audio::Device {
 public:
  explicit TestDevice(double rateHz = 48000.0, unsigned channels = 1, unsigned periodFrames = 64)
      : rateHz_(rateHz), channels_(channels), periodFrames_(periodFrames) {}
  ~TestDevice() override { Spin(false); }

  double GetRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return channels_; }
  unsigned GetPeriodFrames() const override { return periodFrames_; }
  unsigned GetLatencyFrames() const override {
    ++looks_;
    return latency;
  }
  std::string GetDescription() const override { return "test device"; }
  long long GetXrunCount() const override { return xruns; }
  long long GetSilentFrames() const override { return silentFrames; }

  void Start(tesk_audio::DeviceCallback& callback) override {
    if (refuses) throw tesk_audio::TESKAudioError("The device refuses.");
    const std::lock_guard lock(callbackMutex_);
    callback_ = &callback;
  }
  void Stop() override {
    Spin(false);
    const std::lock_guard lock(callbackMutex_);
    callback_ = nullptr;
  }
  bool IsStarted() const {
    const std::lock_guard lock(callbackMutex_);
    return callback_ != nullptr;
  }

  // Takes that many frames, in one go; silence when it has been stopped.
  std::vector<float> Turn(std::size_t frames) {
    std::vector<float> taken(frames * channels_, 0.0F);
    const std::lock_guard lock(callbackMutex_);
    if (callback_ == nullptr) return taken;
    std::fill(taken.begin(), taken.end(), -1.0F);
    ++begunTurns_;
    callback_->Process(taken.data(), frames);
    Keep_(taken);
    ++endedTurns_;
    return taken;
  }

  // Whether it would find that many.
  bool IsReady(std::size_t frames) {
    const std::lock_guard lock(callbackMutex_);
    return callback_ != nullptr && callback_->IsReady(frames);
  }

  void Spin(bool spins) {
    if (spins == thread_.joinable()) return;
    spins_ = spins;
    if (!spins) {
      thread_.join();
      return;
    }
    thread_ = std::thread([this] {
      while (spins_) {
        const std::vector<float> taken = Turn(periodFrames_);
        // Silence gives the machine to who is to end it.
        if (taken.back() == 0.0F) std::this_thread::sleep_for(std::chrono::microseconds(50));
      }
    });
  }

  // Everything taken so far that was not silence, with what the period under way takes: who learns from the
  // callback that its last frame has been taken finds it here.
  std::vector<float> Heard() const {
    AwaitTurn_();
    const std::lock_guard lock(mutex_);
    return heard_;
  }
  std::size_t HeardCount() const {
    AwaitTurn_();
    const std::lock_guard lock(mutex_);
    return heard_.size();
  }
  void ClearHeard() {
    AwaitTurn_();
    const std::lock_guard lock(mutex_);
    heard_.clear();
  }

  // How often the latency was asked for, which a render thread does whenever it looks for what to do.
  long long GetLooks() const { return looks_; }

  std::atomic<unsigned> latency{0};
  std::atomic<long long> xruns{0};
  std::atomic<long long> silentFrames{0};
  bool refuses = false;

 private:
  void AwaitTurn_() const {
    const long long begun = begunTurns_;
    while (endedTurns_ < begun) std::this_thread::sleep_for(std::chrono::microseconds(20));
  }

  void Keep_(const std::vector<float>& taken) {
    const std::lock_guard lock(mutex_);
    for (const float sample : taken) {
      if (sample != 0.0F) heard_.push_back(sample);
    }
  }

  double rateHz_;
  unsigned channels_;
  unsigned periodFrames_;
  mutable std::atomic<long long> looks_{0};
  std::atomic<long long> begunTurns_{0};
  std::atomic<long long> endedTurns_{0};
  mutable std::mutex callbackMutex_;
  tesk_audio::DeviceCallback* callback_ = nullptr;
  mutable std::mutex mutex_;
  std::vector<float> heard_;
  std::atomic<bool> spins_{false};
  std::thread thread_;
};
