#pragma once

#include <cstddef>
#include <string>

namespace tesk_audio {

// What longer periods a device may come back with is fetched in several goes.
inline constexpr unsigned kMostPeriodFrames = 8192;

// Whom a device asks for frames.
class DeviceCallback {
 public:
  virtual ~DeviceCallback() = default;
  // Fills `frames` interleaved frames. Called on the device's own thread, which may be a real-time one: takes
  // no lock, allocates nothing, calls nobody.
  virtual void Process(float* out, std::size_t frames) noexcept = 0;
  // Whether Process would find every frame that it needs; so many are made ready then as soon as can be. A
  // device that runs without a clock waits for that instead of hearing silence. On the device's thread; takes
  // no lock.
  virtual bool IsReady(std::size_t /*frames*/) const noexcept { return true; }
  // Somebody waits for what Process does next, whether or not it is time for it. On the device's thread.
  virtual bool IsAwaited() const noexcept { return false; }
};

// Whom a device tells that it takes no more frames, and that a clock is about to stand in for it.
class DeviceLossListener {
 public:
  virtual ~DeviceLossListener() = default;
  // While nobody asks for frames. True: what has been due since is to be taken at once, unheard, so that the
  // show goes on in step with the stage. False: nothing more than what the callback gives from now on.
  virtual bool OnDeviceLost() = 0;
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

  // Physical outputs that it leads to; 0: as many as there are channels.
  virtual unsigned GetOutputCount() const { return 0; }
  // Times that the sound system itself reported a dropout.
  virtual long long GetXrunCount() const { return 0; }
  // Frames of silence, in all, that it gave in the place of what there was to hear.
  virtual long long GetSilentFrames() const { return 0; }
  // Why nobody can hear it although it runs, and what to do; empty: somebody can. May change while it runs.
  virtual std::string WhyUnheard() const { return ""; }
  // Which of its connections are not there although somebody hears it, and what to do; empty: none is
  // missing. May change while it runs.
  virtual std::string WhatIsMissing() const { return ""; }
  // What heard it before, in this program, is being looked for or connected, or it has not begun to take what
  // it is given: in a moment somebody may hear it, or not. Lasts for seconds at most.
  virtual bool IsConnecting() const { return false; }
  // It has said that it takes no more frames, and why. Many a device dies without a word.
  virtual bool HasFailed() const { return false; }
  virtual std::string GetFailure() const { return ""; }
  // Seconds for which it may rightly ask for nothing.
  virtual double GetPatienceSeconds() const { return 0.5; }
  // Of the thread on which it asks, where that is a real-time one and known; else 0. May change while it
  // runs.
  virtual int GetRealTimePriority() const { return 0; }
  // At present it has no clock: how fast it takes frames tells nothing.
  virtual bool IsFreewheeling() const { return false; }

  // Nobody hears anything at present: a clock stands in for a device that has failed.
  virtual bool IsRecovering() const { return false; }
  // Before Start; null: nobody. A device that nothing can stand in for tells nobody.
  virtual void SetLossListener(DeviceLossListener* /*listener*/) {}

  // From now on `callback` is asked, until Stop. Throws TESKAudioError when the device refuses.
  virtual void Start(DeviceCallback& callback) = 0;
  // Returns when no call of the callback is under way and none will come. Nothing when it does not run. May
  // block for ever when the sound system hangs.
  virtual void Stop() = 0;
};

}  // namespace tesk_audio
