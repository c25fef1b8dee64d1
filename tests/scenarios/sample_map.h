#pragma once

#include <vector>

#include "tests/scenarios/song_plan.h"

namespace scenarios {

// Ticks to samples, computed by the test itself: every tempo segment's length is rounded on its own, halves
// away from zero, and the lengths are added up from the audio start on.
class SampleMap {
 public:
  SampleMap(const SongPlan& song, long double rate);

  long long FirstSample(unsigned tick) const;
  // The tick that contains `sample`.
  unsigned TickOf(long long sample) const;

 private:
  struct Segment {
    unsigned tick;
    long long samples;
    double secondsPerTick;
  };
  long long Samples_(const Segment& segment, unsigned tick) const;

  unsigned audioStart_;
  long double rate_;
  std::vector<Segment> segments_;
};

}  // namespace scenarios
