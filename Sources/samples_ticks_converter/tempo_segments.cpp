#include "Sources/samples_ticks_converter/tempo_segments.h"

#include <algorithm>

namespace samples_ticks_converter {

void TempoSegments::Clear() {
  segments_.clear();
  ticks_.clear();
  samples_.clear();
  samplesAscend_ = true;
  last_ = 0;
}

void TempoSegments::Add(const TempoSegment& segment) {
  if (!samples_.empty() && segment.samples < samples_.back()) samplesAscend_ = false;
  segments_.push_back(segment);
  ticks_.push_back(segment.tick);
  samples_.push_back(segment.samples);
}

const TempoSegment* TempoSegments::FindByTick(TickIndex tick) {
  return Find_(ticks_, tick);
}

const TempoSegment* TempoSegments::FindBySamples(SampleCount samples) {
  return samplesAscend_ ? Find_(samples_, samples) : ScanBySamples_(samples);
}

template <typename Value>
const TempoSegment* TempoSegments::Find_(const std::vector<Value>& values, Value value) {
  const std::size_t count = values.size();
  const auto holds = [&](std::size_t index) {
    return index < count && values[index] <= value && (index + 1 == count || value < values[index + 1]);
  };
  if (holds(last_)) return &segments_[last_];
  if (holds(last_ + 1)) return &segments_[++last_];
  const auto after = std::upper_bound(values.begin(), values.end(), value);
  if (after == values.begin()) return nullptr;
  last_ = static_cast<std::size_t>(after - values.begin()) - 1;
  return &segments_[last_];
}

const TempoSegment* TempoSegments::ScanBySamples_(SampleCount samples) const {
  std::size_t index = 0;
  while (index < samples_.size() && samples_[index] <= samples) ++index;
  return index == 0 ? nullptr : &segments_[index - 1];
}

}  // namespace samples_ticks_converter
