#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "reference_suite/audio/device/device_gate.h"
#include "reference_suite/audio/device/open_device.h"

namespace tesk_audio {

// A device that runs, and the gate through which it asks. The gate is closed, the device hears silence.
struct RunningDevice {
  // In this order: the device goes first.
  std::unique_ptr<DeviceGate> gate;
  std::unique_ptr<Device> device;
};

// Opens and starts a device, again every second until it succeeds, on a thread of its own, since either may
// block for ever.
//
// Threads    ANY.
// Locks      one of its own, innermost.
class DeviceSearch {
 public:
  // The device takes frames of that rate and channel count from `target`; one of another rate has them
  // converted.
  struct Wanted {
    DeviceSource source;
    DeviceCallback* target = nullptr;
    double rateHz = 0.0;
    unsigned channels = 0;
    std::shared_ptr<std::atomic<int>> tries;  // counts those that are under way, also of other searches
  };

  // Throws TESKAudioError when there is no thread to be had.
  explicit DeviceSearch(Wanted wanted);
  // Returns at once. A device that is still found is closed by the thread that found it.
  ~DeviceSearch();
  DeviceSearch(const DeviceSearch&) = delete;
  DeviceSearch& operator=(const DeviceSearch&) = delete;

  // The device, once; empty while there is none.
  RunningDevice Take();
  // Why the last try failed; empty before one has.
  std::string GetError() const;
  // The try that is under way has taken longer than `patience` nanoseconds.
  bool Hangs(long long patience) const;

 private:
  struct State;
  static void* ThreadBody_(void* state);

  std::shared_ptr<State> state_;
};

// Stops and deletes a device on a thread of its own, which may block for ever. Returns when that is done, at
// the latest after `patience` nanoseconds.
void CloseDevice(RunningDevice running, long long patience) noexcept;

}  // namespace tesk_audio
