#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "reference_suite/audio/stretch/stretch_factors.h"

namespace tesk_audio {

enum class DeviceKind {
  Null,     // a clock without sound: paced like a real device
  Offline,  // no thread and no clock: whoever steps it renders
  Jack,     // a client of a JACK server
  Desktop,  // PulseAudio or ALSA
  File,     // a sound file, written as fast as LetFileDeviceTake is called
  Any,      // the first of JACK and the desktop that answers, and that one ever after
};

// What becomes of playback when the device fails.
enum class DeviceLossPolicy {
  RunOn,  // it goes on unheard: the musicians have not stopped
  Hold,   // it is paused where it was
  End,    // it stops
};

struct OutputSettings {
  DeviceKind device = DeviceKind::Null;
  std::string deviceName;            // JACK: the server; the desktop's output; empty: the usual one; the file
  std::vector<unsigned> outputs;     // physical outputs, from 1, that hear channel 1, 2, ...; empty: in order
  std::vector<std::string> connect;  // JACK: regular expressions for the ports to play to, instead
  double rateHz = 0.0;  // of the songs and, where it can choose, of the device; 0: the first content's
  unsigned periodFrames = 256;  // frames that the device takes at a time, where it can choose
  double aheadMs = 15.0;        // rendered ahead of the device, at least one period and one read
  DeviceLossPolicy onDeviceLoss = DeviceLossPolicy::RunOn;
  // At jumps, equal power; 0: bit-exact splices. Stretched sound takes between 5 and 10 ms whatever is said.
  double crossfadeMs = 5.0;
  double fadeMs = 3.0;  // on start, pause, stop and seeks; 0 leaves every sample as it is
  StretchQuality stretch = StretchQuality::Faster;  // of other tempos and keys than the recorded ones
};

// Process-wide, before the first show is opened. Threads: HOST.
void ConfigureOutput(const OutputSettings& settings);
OutputSettings GetOutputSettings();

}  // namespace tesk_audio
