#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/session/device_setup.h"

namespace orbel::host {

struct LiveBenchOptions {
  std::string showPath;  // one that WriteBenchShow has written
  std::string output = "null";
  OutputChoice sound;
  std::vector<int> periods{64, 128, 256, 512, 1024};  // a JACK server has one of its own
  int trials = 20;                                    // of each kind and period
};

// How late a performer may decide, in milliseconds before the device plays the frame that is meant, without
// the device's own latency.
struct LiveBenchRow {
  std::string device;
  unsigned periodFrames = 0;
  double aheadMs = 0.0;
  double latencyMs = 0.0;   // of the device
  int goTrials = 0;         // go in a vamp
  double goLeaves = 0.0;    // the latest go that left it; infinite when none did
  double goTooLate = 0.0;   // the earliest that came too late; 0 when none did
  double goBound = 0.0;     // which that may not exceed
  int caesuraTrials = 0;    // go at a caesura
  double soundsMedian = 0;  // from there until the next frame sounds
  double soundsLongest = 0.0;
  double soundsBound = 0.0;
  int disturbed = 0;  // trials in which the machine held this program up for a millisecond; not counted
  long long underrunFrames = 0;
  long long xruns = 0;
};

// Plays in real time and presses go, now earlier, now later. `tell` is given each row when it is complete.
// Ends early when Ctrl-C was pressed. Throws Failure and the errors of show and audio.
// `say` is told of what is waited for.
void BenchLive(const LiveBenchOptions& options, const Say& say,
               const std::function<void(const LiveBenchRow&)>& tell);

}  // namespace orbel::host
