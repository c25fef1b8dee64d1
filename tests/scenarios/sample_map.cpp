#include "tests/scenarios/sample_map.h"

#include <cmath>

namespace scenarios {

SampleMap::SampleMap(const SongPlan& song, long double rate) : audioStart_(song.audioStart), rate_(rate) {
  const double ppq = song.Ppq();
  auto secondsPerTick = [ppq](unsigned us) { return (static_cast<double>(us) / 1000000.0) / ppq; };
  double atStart = secondsPerTick(500000);
  for (const TempoPlan& tempo : song.tempos) {
    if (tempo.tick <= audioStart_) atStart = secondsPerTick(tempo.microsecondsPerQuarter);
  }
  segments_.push_back({audioStart_, 0, atStart});
  for (const TempoPlan& tempo : song.tempos) {
    if (tempo.tick <= audioStart_) continue;
    const long long samples = Samples_(segments_.back(), tempo.tick);
    segments_.push_back({tempo.tick, samples, secondsPerTick(tempo.microsecondsPerQuarter)});
  }
}

long long SampleMap::Samples_(const Segment& segment, unsigned tick) const {
  const double seconds = segment.secondsPerTick * static_cast<double>(tick - segment.tick);
  return segment.samples + static_cast<long long>(roundl(static_cast<long double>(seconds) * rate_));
}

long long SampleMap::FirstSample(unsigned tick) const {
  if (tick < audioStart_) return 0;
  const Segment* governing = &segments_.front();
  for (const Segment& segment : segments_) {
    if (segment.tick <= tick) governing = &segment;
  }
  return Samples_(*governing, tick);
}

unsigned SampleMap::TickOf(long long sample) const {
  unsigned low = audioStart_;
  unsigned high = low + 1;
  while (FirstSample(high) <= sample) high = low + 2 * (high - low);
  while (high - low > 1) {
    const unsigned middle = low + (high - low) / 2;
    (FirstSample(middle) <= sample ? low : high) = middle;
  }
  return low;
}

}  // namespace scenarios
