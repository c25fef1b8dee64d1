#pragma once

#include <cstdint>

#include "suite/midi/timeline.h"

namespace TL {

// One bar as a stretch of ticks, also one that is counted on past the last bar of the song. 64 bits: a bar
// counted on from the largest tick ends beyond 32.
//
// Units      ticks from the start of the song; beats from 0.
// Threads    plain data.
struct BarSpan {
  std::int64_t bar = 1;
  std::uint64_t start = 0;
  std::uint64_t end = 0;  // where the next bar begins
  std::uint64_t beats = 1;
  std::uint64_t ticks = 1;  // of all beats; more than end - start in a bar that a meter change cuts short

  std::uint64_t BeatLine(std::uint64_t beat) const { return start + beat * ticks / beats; }
  // The beat that contains `tick`, which lies in the bar.
  std::uint64_t BeatAt(std::uint64_t tick) const;
};

// The bar that contains `tick`. A timeline without bars is one bar of one beat that never ends.
BarSpan FindBarSpan(const cmn::SequenceTemplate<BarsBeats>& bars, std::uint64_t tick);

}  // namespace TL
