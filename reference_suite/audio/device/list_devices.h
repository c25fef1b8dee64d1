#pragma once

#include <string>
#include <vector>

#include "reference_suite/audio/output/output_settings.h"

namespace tesk_audio {

// A device that could be played to, or the reason why it cannot.
struct DeviceInfo {
  DeviceKind kind = DeviceKind::Null;
  std::string name;
  bool answers = false;
  std::string problem;        // why it does not answer, and what to do
  double rateHz = 0.0;        // 0: takes any
  unsigned outputs = 0;       // physical ones; 0: as many as are wanted
  unsigned periodFrames = 0;  // 0: takes any
};

// `server`: empty for the usual one. May block for as long as the server hangs.
DeviceInfo LookAtJack(const std::string& server);
// The usual output first; a single one that does not answer when there is no desktop with sound.
std::vector<DeviceInfo> LookAtDesktop();

}  // namespace tesk_audio
