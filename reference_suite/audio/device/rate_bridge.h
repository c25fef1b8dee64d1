#pragma once

#include <pthread.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/output/frame_ring.h"

struct soxr;

namespace tesk_audio {

// Lets a device of one rate take frames of another: a thread of its own fetches them, converts them and keeps
// a little ready. For a device that has come back at another rate in the middle of a show.
//
// Units      what callers see are frames of the rate given, but for the period, which is the device's.
// Threads    Process on the device's thread; the callback is asked on the thread of this object, a real-time
//            one where the system grants it.
// Render     Process takes no lock and allocates nothing.
class RateBridge : public Device, private DeviceCallback {
 public:
  RateBridge(std::unique_ptr<Device> device, double rateHz);
  ~RateBridge() override;
  RateBridge(const RateBridge&) = delete;
  RateBridge& operator=(const RateBridge&) = delete;

  double GetRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return device_->GetChannelCount(); }
  unsigned GetPeriodFrames() const override { return device_->GetPeriodFrames(); }
  unsigned GetLatencyFrames() const override;
  std::string GetDescription() const override;
  unsigned GetOutputCount() const override { return device_->GetOutputCount(); }
  long long GetXrunCount() const override { return device_->GetXrunCount(); }
  long long GetSilentFrames() const override;
  std::string WhyUnheard() const override { return device_->WhyUnheard(); }
  std::string WhatIsMissing() const override { return device_->WhatIsMissing(); }
  bool IsConnecting() const override { return device_->IsConnecting(); }
  int GetRealTimePriority() const override { return device_->GetRealTimePriority(); }
  bool HasFailed() const override { return device_->HasFailed(); }
  std::string GetFailure() const override { return device_->GetFailure(); }
  double GetPatienceSeconds() const override { return device_->GetPatienceSeconds(); }
  bool IsFreewheeling() const override { return device_->IsFreewheeling(); }
  void Start(DeviceCallback& callback) override;
  void Stop() override;

 private:
  void Process(float* out, std::size_t frames) noexcept override;
  bool IsReady(std::size_t frames) const noexcept override;
  static void* ThreadBody_(void* self);
  void Run_();
  void Fill_();
  bool HasTime_() const;
  std::size_t GetWanted_() const;

  std::unique_ptr<Device> device_;
  const double rateHz_;
  FrameRing ring_;  // of the device's rate
  soxr* converter_ = nullptr;
  std::vector<float> taken_;
  std::vector<float> converted_;
  DeviceCallback* callback_ = nullptr;
  pthread_t thread_{};
  bool runs_ = false;
  std::atomic<bool> stops_{false};
  std::atomic<double> delay_{0.0};  // frames of the device's rate that the converter holds
  std::atomic<bool> hasBegun_{false};
  std::atomic<long long> silent_{0};  // frames of the device's rate
};

}  // namespace tesk_audio
