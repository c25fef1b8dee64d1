#pragma once

#include <cstddef>

namespace tesk_audio {

enum class DeviceKind {
  Null,     // a clock without sound: paced like a real device
  Offline,  // no thread and no clock: whoever steps it renders
};

struct OutputSettings {
  DeviceKind device = DeviceKind::Null;
  double rateHz = 0.0;          // the device's rate; 0: it takes the rate of the first content
  unsigned periodFrames = 256;  // frames that the device takes at a time
  double aheadMs = 15.0;        // rendered ahead of the device, at least one period and one read
  double crossfadeMs = 5.0;     // at jumps, equal power; 0: bit-exact splices
  double fadeMs = 3.0;          // on start, pause and stop; 0 leaves every sample as it is
};

// Process-wide, before the first show is opened. Threads: HOST.
void ConfigureOutput(const OutputSettings& settings);
OutputSettings GetOutputSettings();

}  // namespace tesk_audio
