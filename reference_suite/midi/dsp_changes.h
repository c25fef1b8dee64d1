#pragma once

#include <vector>

namespace CL {
struct SongLog;
}

// The tempo scale and the transposition that a change log asks for from a tick on, unlimited and without
// transients.
struct DspChange {
  unsigned tick = 0;
  double scale = 1.0;
  int semitones = 0;
};

// The curve of both values over a song. The first entry stands at tick 0; every further one differs in a
// value from the one before it, so that an event that repeats what holds already is none.
//
// Units      ticks from the start of the song; semitones.
// Threads    plain object, filled once.
// Render     the queries allocate nothing and search a sorted list.
class DspChanges {
 public:
  DspChanges() : changes_(1) {}
  explicit DspChanges(const CL::SongLog& log);

  const DspChange& At(unsigned tick) const;
  // The first tick after `tick` at which a value changes; the largest unsigned value when none does.
  unsigned NextAfter(unsigned tick) const;

 private:
  std::vector<DspChange> changes_;
};
