#pragma once

#include <pthread.h>

#include <atomic>
#include <vector>

#include "reference_suite/audio/device/device.h"

namespace tesk_audio {

// A clock without sound: takes a period of frames as often as a real device of its rate would, and throws
// them away. Paced by the system's monotonic clock, which no clock setting moves.
//
// Threads    its own while it runs.
class NullDevice : public Device {
 public:
  // `dueSince`: when the first frame is due, in nanoseconds of the monotonic clock; 0: when it is started.
  // What is overdue then is taken as fast as the callback has it ready.
  NullDevice(double rateHz, unsigned channels, unsigned periodFrames, long long dueSince = 0);
  ~NullDevice() override;
  NullDevice(const NullDevice&) = delete;
  NullDevice& operator=(const NullDevice&) = delete;

  double GetRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return channels_; }
  unsigned GetPeriodFrames() const override { return periodFrames_; }
  unsigned GetLatencyFrames() const override { return 0; }
  std::string GetDescription() const override;
  void Start(DeviceCallback& callback) override;
  void Stop() override;

 private:
  static void* ThreadBody_(void* self);
  void Run_() noexcept;
  long long CatchUp_(long long start, double period);

  const long long dueSince_;
  double rateHz_;
  unsigned channels_;
  unsigned periodFrames_;
  std::vector<float> frames_;
  DeviceCallback* callback_ = nullptr;
  pthread_t thread_{};
  bool runs_ = false;  // the thread exists
  std::atomic<bool> shouldRun_{false};
};

}  // namespace tesk_audio
