#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tesk_audio {

// How much of the time that was available something took, over many goes: median, 99.9th percentile, longest.
//
// Units      1 is all of the time.
// Threads    Add by one thread, the queries by any.
// Render     allocates nothing, takes no lock.
class LoadMeter {
 public:
  void Add(double load);
  // The load that this share of all goes (0 to 1) does not exceed, to within a twentieth of it; 0 before the
  // first.
  double GetQuantile(double share) const;
  double GetLongest() const { return longest_; }
  long long GetCount() const;

 private:
  static constexpr std::size_t kBuckets = 320;
  static std::size_t BucketOf(double load);
  static double TopOf(std::size_t bucket);

  std::array<std::atomic<std::uint32_t>, kBuckets> buckets_{};
  std::atomic<double> longest_{0.0};
};

}  // namespace tesk_audio
