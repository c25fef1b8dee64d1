#include "host/demo/score/score.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace orbel::host::demo {

void Score::Meter(int bar, unsigned numerator, unsigned denominator) {
  const Tick tick = meters_.empty() ? 0 : At(bar);
  meters_.push_back({tick, bar, numerator, denominator});
}

Tick Score::At(int bar, double quarters) const {
  const MeterChange* governing = nullptr;
  for (const MeterChange& meter : meters_) {
    if (meter.bar <= bar) governing = &meter;
  }
  if (governing == nullptr) {
    throw std::logic_error(title_ + ": bar " + std::to_string(bar) + " lies before the first meter");
  }
  return governing->tick + static_cast<Tick>(bar - governing->bar) * TicksPerBar_(*governing) +
         static_cast<Tick>(std::lround(quarters * division_));
}

bool Score::IsBarLine(Tick tick) const {
  const MeterChange* governing = nullptr;
  for (const MeterChange& meter : meters_) {
    if (meter.tick <= tick) governing = &meter;
  }
  return governing != nullptr && (tick - governing->tick) % TicksPerBar_(*governing) == 0;
}

Tick Score::TicksPerBar_(const MeterChange& meter) const {
  return division_ * 4 * meter.numerator / meter.denominator;
}

void Score::Tempo(Tick tick, double quartersPerMinute) {
  tempos_.push_back({tick, static_cast<std::uint32_t>(std::lround(60'000'000.0 / quartersPerMinute))});
}

void Score::Ramp(Tick from, Tick to, double fromTempo, double toTempo, unsigned steps) {
  for (unsigned step = 0; step < steps; ++step) {
    const Tick tick = from + (to - from) * step / steps;
    Tempo(tick, fromTempo + (toTempo - fromTempo) * (step + 1) / steps);
  }
}

Part& Score::Add(Part part) {
  parts_.push_back(std::move(part));
  return parts_.back();
}

}  // namespace orbel::host::demo
