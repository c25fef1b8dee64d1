#pragma once

#include <cstdint>

#include "suite/midi/timeline.h"

namespace TL {

// One bar as a stretch of ticks, also one that is counted on past the last bar of the song. 64 bits: a bar
// counted on from the largest tick ends beyond 32.
//
// Units      ticks from the start of the song, or sixteenths of them; beats from 0.
// Threads    plain data.
struct BarSpan {
  std::int64_t bar = 1;
  std::uint64_t startSixteenths = 0;
  std::uint64_t sixteenthsPerBeat = 16;
  std::uint64_t beats = 1;
  std::uint64_t end =
      0;  // the tick where the next bar begins: before the last beat ends where a meter cuts in

  std::uint64_t Start() const { return startSixteenths / 16; }
  // Rounded down, each line for itself.
  std::uint64_t BeatLine(std::uint64_t beat) const {
    return (startSixteenths + beat * sixteenthsPerBeat) / 16;
  }
  // The beat that contains `tick`, which lies in the bar.
  std::uint64_t BeatAt(std::uint64_t tick) const;
};

// The bar that contains `tick`. A timeline without bars is one bar of one beat that never ends.
BarSpan FindBarSpan(const cmn::SequenceTemplate<BarsBeats>& bars, std::uint64_t tick);

}  // namespace TL
