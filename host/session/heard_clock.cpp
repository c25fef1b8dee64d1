#include "host/session/heard_clock.h"

#include <algorithm>

namespace orbel::host {
namespace {

// A device that was held up may go on later than before, so what is older no longer counts.
constexpr double kMemorySeconds = 0.1;

}  // namespace

void HeardClock::Look(double now, long long heard) {
  if (heard == heard_) return;
  // How much of the first leap the device's latency has swallowed is not known.
  if (heard_ > 0) leaps_.push_back({now, now - static_cast<double>(heard_) / rateHz_});
  heard_ = heard;
  while (!leaps_.empty() && leaps_.front().time < now - kMemorySeconds) leaps_.pop_front();
}

std::optional<double> HeardClock::WhenHeard(long long frame) const {
  if (leaps_.empty()) return std::nullopt;
  const auto earliest = std::min_element(leaps_.begin(), leaps_.end(),
                                         [](const Leap& a, const Leap& b) { return a.zero < b.zero; });
  return earliest->zero + static_cast<double>(frame) / rateHz_;
}

}  // namespace orbel::host
