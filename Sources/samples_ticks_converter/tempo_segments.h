#pragma once

#include <cstddef>
#include <vector>

#include "Sources/types.h"

namespace samples_ticks_converter {

// One stretch of constant tempo: an entry of the tempo map, with what the conversions compute from it.
struct TempoSegment {
  TickIndex tick = 0;
  SampleCount samples = 0;  // at which its tick begins
  double secondsPerTick = 0.0;
  double samplesPerTick = 0.0;
};

// The entries of a tempo map side by side in memory, so that finding the one in force costs next to nothing
// while playing (the last answer, or the one behind it, holds again) and a search otherwise.
//
// Units      ticks and samples as in the map.
// Threads    one at a time: a search remembers its answer. The owner's lock orders them.
// Render     the searches allocate nothing.
class TempoSegments {
 public:
  void Clear();
  // Segments must be added in the order of their ticks.
  void Add(const TempoSegment& segment);

  // The last segment whose tick is not greater than `tick`; null when there is none.
  const TempoSegment* FindByTick(TickIndex tick);

  // What a scan from the first segment stops in front of when it looks for one with more samples: where
  // samples never decrease, the last segment whose samples are not greater. Null when there is none, or the
  // first already has more.
  const TempoSegment* FindBySamples(SampleCount samples);

 private:
  template <typename Value>
  const TempoSegment* Find_(const std::vector<Value>& values, Value value);
  const TempoSegment* ScanBySamples_(SampleCount samples) const;

  std::vector<TempoSegment> segments_;
  // The same once more, so that a search reads little memory.
  std::vector<TickIndex> ticks_;
  std::vector<SampleCount> samples_;
  // False for counts that wrapped, and for sample rates below 0.
  bool samplesAscend_ = true;
  std::size_t last_ = 0;  // the last answer
};

}  // namespace samples_ticks_converter
