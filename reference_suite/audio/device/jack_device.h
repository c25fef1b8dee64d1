#pragma once

#include <jack/jack.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/device/jack_client.h"
#include "reference_suite/audio/device/jack_links.h"

namespace tesk_audio {

// A client of a JACK server with one port a channel: out_1, out_2 and so on. The server decides rate and
// period.
//
// Threads    the server's process thread calls the callback; its notification thread sets what is atomic; a
//            keeper of our own makes the links again when ports come back, and learns what somebody connects
//            by hand. Everything else as for any device. Nothing is closed from a notification.
// Locks      mutex_, innermost, never on the process thread.
// Freewheel  frames are taken as fast as the callback has them ready, and none is missed.
class JackDevice : public Device {
 public:
  // Opens the client. `links` is shared with the device before this one, so that what was connected is
  // connected again; it is touched by the running one alone. Throws TESKAudioError.
  JackDevice(const std::string& server, unsigned channels, std::shared_ptr<JackLinks> links);
  ~JackDevice() override;
  JackDevice(const JackDevice&) = delete;
  JackDevice& operator=(const JackDevice&) = delete;

  double GetRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return channels_; }
  unsigned GetPeriodFrames() const override { return period_; }
  unsigned GetLatencyFrames() const override { return std::max(latency_.load(), targetLatency_.load()); }
  std::string GetDescription() const override;
  unsigned GetOutputCount() const override { return outputs_; }
  long long GetXrunCount() const override { return xruns_; }
  std::string WhyUnheard() const override;
  std::string WhatIsMissing() const override;
  bool IsConnecting() const override { return connecting_; }
  int GetRealTimePriority() const override { return priority_; }
  bool HasFailed() const override { return failed_; }
  std::string GetFailure() const override;
  bool IsFreewheeling() const override { return freewheels_; }

  void Start(DeviceCallback& callback) override;
  void Stop() override;

 private:
  // ---- jack_process.cpp: the process thread
  static int ProcessCallback_(jack_nframes_t frames, void* self);
  void Process_(jack_nframes_t frames) noexcept;
  void WaitUntilReady_(std::size_t frames) const;

  // ---- jack_notifications.cpp: the notification thread
  void SetCallbacks_();
  void UpdateLatency_();
  void Fail_(const char* reason);
  void NotePort_(jack_port_id_t port);
  void NoteRate_(jack_nframes_t rateHz);

  // ---- jack_device.cpp
  void RegisterPorts_();
  static void* KeeperBody_(void* self);
  void KeepLinks_();
  void LookAfterLinks_();
  void RenewPorts_();
  std::set<JackLink> GetLinks_() const;
  void NoteTargetLatency_(const std::set<JackLink>& links);
  void NoteWhoHears_(const std::vector<std::string>& inputs, const std::set<JackLink>& links);
  std::string AdviceWhenUnheard_() const;
  std::string AdviceOnMissing_(const std::vector<std::string>& inputs, const std::set<JackLink>& links) const;
  std::string AdviceOnAlone_(const std::set<JackLink>& links);

  std::unique_ptr<JackClient> client_;
  const unsigned channels_;
  const double rateHz_;
  const int priority_;
  const std::shared_ptr<JackLinks> links_;
  std::vector<jack_port_t*> ports_;

  // The process thread's, which allocates nothing.
  DeviceCallback* callback_ = nullptr;
  std::vector<float*> buffers_;
  std::vector<float> frames_;

  std::atomic<unsigned> outputs_{0};  // physical ones that there are
  std::atomic<unsigned> period_;
  std::atomic<unsigned> latency_{0};  // as the server tells our ports, a moment after they are connected
  std::atomic<unsigned> targetLatency_{0};  // as the ports tell that hear ours
  std::atomic<long long> xruns_{0};
  std::atomic<bool> freewheels_{false};
  std::atomic<bool> failed_{false};
  std::atomic<bool> connecting_{false};
  std::atomic<bool> stops_{false};  // for the keeper, and for a process thread that waits

  mutable std::mutex mutex_;
  std::string failure_;  // all guarded by it
  std::string unheard_;
  std::string missing_;
  std::vector<jack_port_id_t> newPorts_;

  // The keeper's, once it runs.
  double heardUntil_ = 0.0;         // seconds
  double connectUntil_ = 0.0;       // what was connected before is waited for
  std::vector<double> withOthers_;  // of each channel: until when it was, or ought to have been, connected

  pthread_t keeper_{};
  bool runs_ = false;  // active, and the keeper exists
};

}  // namespace tesk_audio
