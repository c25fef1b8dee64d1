#pragma once

#include <pthread.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "reference_suite/audio/device/device_search.h"
#include "reference_suite/audio/device/device_watch.h"
#include "reference_suite/audio/device/null_device.h"
#include "suite/core/device_update.h"

namespace tesk_audio {

// A device that never ends: when the one that it has opened fails, a clock without sound goes on in its
// place, and another one is looked for every second. What is taken meanwhile is what would have been heard:
// the clock first takes, as fast as it is rendered, what was due since the last frame that the device took.
// When a device is there again it fades in where the show now is.
//
// Units      frames of the rate given; a device of another rate has them converted.
// Threads    whichever device runs asks on its thread, one at a time; a thread of this object watches and
//            changes over; opening and closing have threads of their own, which may hang for ever.
// Locks      mutex_, innermost: what queries from other threads read.
class ResilientDevice : public Device {
 public:
  struct Shape {
    double rateHz = 48000.0;
    unsigned channels = 2;
    unsigned periodFrames = 256;  // of the clock without sound
    double openSeconds = 10.0;    // that one try to open a device may take before another is made beside it
  };
  // Called on the watching thread at every change, that of the reason why a lost device stays away included,
  // and inside Start when there is no device at once, or one that nobody can hear everywhere.
  using Tell = std::function<void(const notify::DeviceUpdate&)>;

  ResilientDevice(const Shape& shape, DeviceSource source, Tell tell);
  ~ResilientDevice() override;
  ResilientDevice(const ResilientDevice&) = delete;
  ResilientDevice& operator=(const ResilientDevice&) = delete;

  double GetRateHz() const override { return shape_.rateHz; }
  unsigned GetChannelCount() const override { return shape_.channels; }
  unsigned GetPeriodFrames() const override { return period_; }
  unsigned GetLatencyFrames() const override { return latency_; }
  std::string GetDescription() const override;
  unsigned GetOutputCount() const override { return outputs_; }
  long long GetXrunCount() const override { return xruns_; }
  long long GetSilentFrames() const override { return silent_; }
  std::string WhyUnheard() const override;
  std::string WhatIsMissing() const override;
  int GetRealTimePriority() const override { return priority_; }
  void SetLossListener(DeviceLossListener* listener) override { lossListener_ = listener; }
  bool IsRecovering() const override { return recovering_; }

  // Waits a moment for the device; without one it begins with the clock.
  void Start(DeviceCallback& callback) override;
  void Stop() override;

 private:
  static void* ThreadBody_(void* self);
  void Run_();
  void Look_();
  void LookAtDevice_();
  void LookForDevice_();
  void TellWhyItStaysAway_(bool hangs);
  void BeginSearch_();
  void WaitForFirst_();
  void TakeFirst_(RunningDevice found);
  void BeginWatching_();
  void CloseAll_();
  void Lose_(const std::string& reason);
  void StandIn_();
  void ChangeOver_(RunningDevice found);
  void Publish_();
  void PublishCounts_(const RunningDevice& running);
  void Tell_(bool recovering, const std::string& reason);

  const Shape shape_;
  const DeviceSource source_;
  const Tell tell_;
  DeviceCallback* callback_ = nullptr;
  DeviceLossListener* lossListener_ = nullptr;

  // The watching thread's, and of whoever starts and stops it.
  RunningDevice running_;    // empty while the clock stands in
  RunningDevice candidate_;  // opened, but it has not asked for a frame yet, or is still being connected
  RunningDevice standIn_;
  std::unique_ptr<DeviceSearch> search_;
  DeviceWatch watch_;
  const std::shared_ptr<std::atomic<int>> tries_ = std::make_shared<std::atomic<int>>(0);  // to open a device
  std::string away_;  // why no device has been found, as it was told
  long long candidateSince_ = 0;
  long long standInDue_ = 0;   // since when frames are due that a clock is to take; 0: from its start on
  long long xrunsBefore_ = 0;  // both of devices that are gone
  long long silentBefore_ = 0;

  std::atomic<unsigned> period_;
  std::atomic<unsigned> latency_{0};
  std::atomic<unsigned> outputs_{0};
  std::atomic<int> priority_{0};
  std::atomic<long long> xruns_{0};
  std::atomic<long long> silent_{0};
  std::atomic<bool> recovering_{false};
  std::atomic<bool> stops_{false};
  mutable std::mutex mutex_;
  std::string description_;  // all guarded by it
  std::string unheard_;
  std::string missing_;
  pthread_t thread_{};
  bool runs_ = false;
};

}  // namespace tesk_audio
