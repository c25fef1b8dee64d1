#pragma once

#include <string>
#include <vector>

namespace tesk_audio {

class LiveSampleOutput;

// How a live output is doing.
struct OutputMeters {
  std::string device;
  unsigned outputs = 0;       // physical ones of the device; 0: as many as there are channels
  unsigned periodFrames = 0;  // that the device takes at a time
  bool recovering = false;    // a clock stands in for a device that has failed
  std::vector<float> peaks;   // per channel since they were read last; 1 is full scale
  double ringMs = 0.0;        // rendered and still to be heard
  double latencyMs = 0.0;     // from the device taking a frame to the loudspeaker
  double loadMedian = 0.0;    // share of the time that a render step had; 1 is all of it
  double load999 = 0.0;       // 99.9th percentile
  double loadLongest = 0.0;
  long long underrunFrames = 0;  // of silence because the ring ran short
  long long xruns = 0;           // that the sound system reported
};

// Of the live output that there is. False, and nothing is written, when there is none. Threads: ANY.
bool ReadOutputMeters(OutputMeters* meters);

// While held, live outputs play to nobody: what is started stands at its first frame. Held by several at once
// it goes on when the last has let go. Threads: ANY.
void HoldLiveOutputs();
void ReleaseLiveOutputs();
bool LiveOutputsAreHeld();

// By the output itself.
void RegisterLiveOutput(LiveSampleOutput* output);
void UnregisterLiveOutput(LiveSampleOutput* output);

}  // namespace tesk_audio
