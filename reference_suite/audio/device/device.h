#pragma once

#include <cstddef>
#include <string>

namespace tesk_audio {

// Whom a device asks for frames.
class DeviceCallback {
 public:
  virtual ~DeviceCallback() = default;
  // Fills `frames` interleaved frames. Called on the device's own thread, which may be a real-time one: takes
  // no lock, allocates nothing, calls nobody.
  virtual void Process(float* out, std::size_t frames) noexcept = 0;
  // Whether Process would find every frame that it needs. A device that runs without a clock waits for that
  // instead of hearing silence. On the device's thread; takes no lock.
  virtual bool IsReady(std::size_t /*frames*/) const noexcept { return true; }
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
  // The most frames that it takes at a time. May change while it runs.
  virtual unsigned GetPeriodFrames() const = 0;
  // Frames from the callback to the loudspeaker. May change while it runs.
  virtual unsigned GetLatencyFrames() const = 0;
  // What it is and how it runs, for people.
  virtual std::string GetDescription() const = 0;

  // Times that the sound system itself reported a dropout.
  virtual long long GetXrunCount() const { return 0; }
  // It has said that it takes no more frames, and why. Many a device dies without a word.
  virtual bool HasFailed() const { return false; }
  virtual std::string GetFailure() const { return ""; }
  // At present it has no clock: how fast it takes frames tells nothing.
  virtual bool IsFreewheeling() const { return false; }

  // From now on `callback` is asked, until Stop. Throws TESKAudioError when the device refuses.
  virtual void Start(DeviceCallback& callback) = 0;
  // Returns when no call of the callback is under way and none will come. Nothing when it does not run. May
  // block for ever when the sound system hangs.
  virtual void Stop() = 0;
};

}  // namespace tesk_audio
