#pragma once

#include <cstdint>
#include <random>

#include "tests/scenarios/song_plan.h"

namespace scenarios {

// Random numbers that are the same with every standard library.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine_(seed) {}
  // From `low` to `high`, both included.
  unsigned Between(unsigned low, unsigned high) {
    return low + static_cast<unsigned>(engine_() % (high - low + 1ULL));
  }
  bool OneIn(unsigned n) { return Between(1, n) == 1; }

 private:
  std::mt19937_64 engine_;
};

// A song of a few seconds with cues of every kind, often close together, on one tick, or on the song's ends.
SongPlan RandomSong(Dice* dice, unsigned rate);

}  // namespace scenarios
