#pragma once

#include "suite/core/change_log_events.h"
#include "suite/core/sequence.h"

namespace CL {

// The change log of one song: its cues and DSP values. Every sequence is in ascending ticks of its start.
// Plain data; read by any thread, replaced as a whole through ShowControl::SetChangeLog.
struct SongLog {
  bool skip = false;          // left out of preloading
  unsigned char attacca = 0;  // 0: stop at the end; 1: run straight on into the next song
  cmn::SequenceTemplate<Loop> loops;
  cmn::SequenceTemplate<Cut> cuts;
  cmn::SequenceTemplate<Caesura> caesuras;
  cmn::SequenceTemplate<TempoScale> tempoScales;
  cmn::SequenceTemplate<Transpose> transposes;
  cmn::SequenceTemplate<Marker> markers;
  cmn::SequenceTemplate<Click> clicks;
};

}  // namespace CL
