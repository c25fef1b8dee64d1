#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>

#include "tests/scenarios/song_plan.h"

namespace scenarios {

// Random numbers that are the same with every standard library; or given ones, and random ones behind them.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine_(seed) {}
  // `given` outlives the dice.
  explicit Dice(std::span<const std::uint8_t> given) : given_(given), engine_(given.size()) {}
  // From `low` to `high`, both included.
  unsigned Between(unsigned low, unsigned high) {
    const std::uint64_t range = high - low + 1ULL;
    return low + static_cast<unsigned>(Draw_(range) % range);
  }
  bool OneIn(unsigned n) { return Between(1, n) == 1; }

 private:
  // As many given bytes as the range needs, the low one first.
  std::uint64_t Draw_(std::uint64_t range) {
    if (next_ == given_.size()) return engine_();
    std::uint64_t drawn = 0;
    int shift = 0;
    for (std::uint64_t left = range - 1; left > 0 && next_ < given_.size(); left >>= 8, shift += 8) {
      drawn |= static_cast<std::uint64_t>(given_[next_++]) << shift;
    }
    return drawn;
  }

  std::span<const std::uint8_t> given_;
  std::size_t next_ = 0;
  std::mt19937_64 engine_;
};

// A song of a few seconds with cues of every kind, often close together, on one tick, or on the song's ends.
SongPlan RandomSong(Dice* dice, unsigned rate);

}  // namespace scenarios
