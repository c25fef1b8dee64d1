#pragma once

#include <string>

namespace notify {

// What has become of the audio device. Sent under names::audio_device_changed.
struct DeviceUpdate {
  // A clock without sound stands in for the device, and nobody hears anything.
  bool recovering = false;
  // What takes the sound now; when it is recovering, what did.
  std::string device;
  std::string reason;  // of the failure, or of its staying away; for people
  // Why nobody can hear the device although it runs, and what to do; empty: somebody can.
  std::string unheard = {};
  // Which of its connections are not there although somebody hears it, and what to do; empty: none is
  // missing.
  std::string missing = {};
};

}  // namespace notify
