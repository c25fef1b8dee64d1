#include "host/demo/score/tempo_map.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace orbel::host::demo {

namespace {

constexpr std::uint32_t kDefaultMicroseconds = 500'000;

}  // namespace

TempoMap::TempoMap(const Score& score, Tick audioStart, unsigned rate) : rate_(rate) {
  std::map<Tick, std::uint32_t> tempos{{0, kDefaultMicroseconds}};
  for (const TempoChange& tempo : score.Tempos()) tempos[tempo.tick] = tempo.microsecondsPerQuarter;
  // The audio start begins a stretch of its own, at the tempo in force there.
  tempos[audioStart] = std::prev(tempos.upper_bound(audioStart))->second;
  for (auto tempo = tempos.find(audioStart); tempo != tempos.end(); ++tempo) {
    const double secondsPerTick =
        (static_cast<double>(tempo->second) / 1000000.0) / static_cast<double>(score.Division());
    const std::int64_t frame = stretches_.empty() ? 0 : FrameAt(tempo->first);
    stretches_.push_back({tempo->first, frame, secondsPerTick});
  }
}

std::int64_t TempoMap::FrameAt(Tick tick) const {
  const auto after =
      std::upper_bound(stretches_.begin(), stretches_.end(), tick,
                       [](Tick wanted, const Stretch& stretch) { return wanted < stretch.tick; });
  if (after == stretches_.begin()) return 0;
  const Stretch& stretch = *std::prev(after);
  return stretch.frame + FramesOf_(tick - stretch.tick, stretch.secondsPerTick);
}

std::int64_t TempoMap::FramesOf_(Tick ticks, double secondsPerTick) const {
  const double seconds = static_cast<double>(ticks) * secondsPerTick;
  return static_cast<std::int64_t>(::roundl(static_cast<long double>(seconds) * rate_));
}

}  // namespace orbel::host::demo
