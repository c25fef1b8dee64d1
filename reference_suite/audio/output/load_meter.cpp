#include "reference_suite/audio/output/load_meter.h"

#include <algorithm>
#include <cmath>

namespace tesk_audio {

namespace {

// Buckets grow by a twentieth each, from a hundred-thousandth upwards; the last takes all that is more.
constexpr double kLowest = 1e-5;
constexpr double kGrowth = 1.05;

}  // namespace

std::size_t LoadMeter::BucketOf(double load) {
  if (load <= kLowest) return 0;
  const double bucket = std::ceil(std::log(load / kLowest) / std::log(kGrowth));
  return static_cast<std::size_t>(std::clamp(bucket, 0.0, static_cast<double>(kBuckets - 1)));
}

double LoadMeter::TopOf(std::size_t bucket) {
  return kLowest * std::pow(kGrowth, static_cast<double>(bucket));
}

void LoadMeter::Add(double load) {
  buckets_[BucketOf(load)].fetch_add(1, std::memory_order_relaxed);
  if (load > longest_) longest_ = load;
}

long long LoadMeter::GetCount() const {
  long long count = 0;
  for (const auto& bucket : buckets_) count += bucket.load(std::memory_order_relaxed);
  return count;
}

double LoadMeter::GetQuantile(double share) const {
  const double wanted = share * static_cast<double>(GetCount());
  if (wanted <= 0.0) return 0.0;
  double seen = 0.0;
  for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
    seen += buckets_[bucket].load(std::memory_order_relaxed);
    if (seen >= wanted) return std::min(TopOf(bucket), longest_.load());
  }
  return longest_;
}

}  // namespace tesk_audio
