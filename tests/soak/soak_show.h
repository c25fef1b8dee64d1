#pragma once

#include <vector>

#include "tests/scenarios/song_plan.h"

namespace soak {

constexpr unsigned kRate = 48000;
constexpr unsigned kPpq = 480;

// At 240 beats a minute a tick is 25 samples. The first one of `tick`, reckoned without the engine.
constexpr long long FirstSample(long long tick) {
  return tick * 25;
}

// Songs of half a minute to a minute, with loops, cuts, caesuras and attaccas; the frames of each have values
// that no other has.
std::vector<scenarios::SongPlan> Songs();

// A song of `beats` without any cue.
scenarios::SongPlan PlainSong(unsigned beats);

}  // namespace soak
