#pragma once

#include <cstddef>

namespace tesk_audio {

// Whom a device asks for frames.
class DeviceCallback {
 public:
  virtual ~DeviceCallback() = default;
  // Fills `frames` interleaved frames. Called on the device's own thread, which may be a real-time one: takes
  // no lock, allocates nothing, calls nobody.
  virtual void Process(float* out, std::size_t frames) noexcept = 0;
};

// Something that takes frames in real time, opened by its maker at a fixed rate and channel count. It runs
// for the whole show: silence between the songs comes from the callback, so that starting to play never waits
// for hardware.
//
// Threads    Start and Stop by the output; the queries by any thread.
class Device {
 public:
  virtual ~Device() = default;

  // Frames per second.
  virtual double GetRateHz() const = 0;
  virtual unsigned GetChannelCount() const = 0;
  // The most frames that it takes at a time.
  virtual unsigned GetPeriodFrames() const = 0;
  // Frames from the callback to the loudspeaker. May change while it runs.
  virtual unsigned GetLatencyFrames() const = 0;

  // From now on `callback` is asked, until Stop. Throws TESKAudioError when the device refuses.
  virtual void Start(DeviceCallback& callback) = 0;
  // Returns when no call of the callback is under way and none will come. Nothing when it does not run.
  virtual void Stop() = 0;
};

}  // namespace tesk_audio
