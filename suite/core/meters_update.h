#pragma once

#include <string>
#include <vector>

namespace notify {

// How the live output is doing. Sent under names::audio_meters.
struct MetersUpdate {
  std::string device;
  unsigned outputs = 0;       // physical ones of the device; 0: as many as there are channels
  unsigned periodFrames = 0;  // that the device takes at a time
  bool recovering = false;    // a clock without sound stands in for a device that has failed
  std::string unheard;        // why nobody can hear the device although it runs, and what to do; or empty
  std::vector<float> peaks;   // per channel since they were read last; 1 is full scale
  double ringMs = 0.0;        // rendered and still to be heard
  double latencyMs = 0.0;     // from the device taking a frame to the loudspeaker
  double loadMedian = 0.0;    // share of the time that a render step had; 1 is all of it
  double load999 = 0.0;       // 99.9th percentile
  double loadLongest = 0.0;
  long long underrunFrames = 0;  // of silence because the ring ran short
  long long xruns = 0;           // that the sound system reported
};

}  // namespace notify
