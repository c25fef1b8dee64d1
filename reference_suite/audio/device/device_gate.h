#pragma once

#include <atomic>
#include <cstddef>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/device/device_timeline.h"
#include "reference_suite/audio/output/fade.h"

namespace tesk_audio {

// Stands between one device and whom it asks for frames, so that a device that has failed can be let go of
// although it may go on asking: it hears silence then.
//
// Units      frames; nanoseconds of the monotonic clock.
// Threads    Process and IsReady on the device's thread; Open and Close by one other thread; queries by any.
// Render     Process takes no lock and allocates nothing. It reads the clock, which costs no system call.
// Pace       a device that takes frames faster than time passes hears silence as well, so that a broken one
//            moves the song on by a moment and no more.
class DeviceGate : public DeviceCallback {
 public:
  // `device` asks through this gate; null: a clock, whose pace is not limited. The gate is closed.
  DeviceGate(DeviceCallback& target, unsigned channels, double rateHz, const Device* device);

  // Passes calls on from now on, after a fade-in. `dueSince`: when the next frame is due to be heard; 0: with
  // the first call. What was due before is passed over unheard, as fast as it is rendered: a device hears
  // silence until then, a clock takes it for itself. What sounds later in one device than in the one before
  // is given to it earlier.
  void Open(std::size_t fadeFrames, long long dueSince);
  // Returns when no call is being passed on and none will be.
  void Close();

  // When it was called last; 0: never.
  long long GetLastCall() const { return lastCall_; }
  // All frames that were asked for, whatever they held.
  long long GetFramesAsked() const { return asked_; }
  // When the frame after the last that was passed on is due to be heard.
  long long GetDueTime() const { return dueTime_; }
  // Frames of silence that a device heard because it took them faster than time passes.
  long long GetSilentFrames() const { return silent_; }

  void Process(float* out, std::size_t frames) noexcept override;
  bool IsReady(std::size_t frames) const noexcept override;

 private:
  void NoteStart_(std::size_t frames, long long now);
  bool MayPass_(std::size_t frames, long long now);
  bool HasCaughtUp_(float* out, std::size_t frames);
  long long GetLatency_() const;

  DeviceCallback& target_;
  const unsigned channels_;
  const double rateHz_;
  const Device* const device_;
  std::atomic<bool> open_{false};
  std::atomic<bool> inside_{false};
  mutable std::atomic<long long> lastCall_{0};
  std::atomic<long long> asked_{0};
  std::atomic<long long> dueTime_{0};
  std::atomic<long long> silent_{0};

  DeviceTimeline timeline_;  // the device's thread's, as startsAt_
  long long startsAt_ = 0;   // when the first frame of the call is due to leave the device
  // Set before the gate is opened, then the device's thread only.
  Fade fade_;
  long long dueSince_ = 0;
  double clockFrames_ = 0.0;  // taken by a clock
  double credit_ = -1.0;      // frames that may be taken at once; negative: not counted yet
  double mostCredit_ = 0.0;
  long long creditTime_ = 0;
};

}  // namespace tesk_audio
