#pragma once

#include "reference_suite/midi/standard_midi_file/standard_midi_file.h"

namespace tesk_midi {

// The factor by which every tick of the file is multiplied when the song is loaded: the smallest whole number
// for which the PPQ is at least 480 and no tick lasts longer than 2.5 ms. Ticks stay short against a read, so
// that a read can end exactly on a cue; a whole factor keeps every time as it is.
//
// Throws TimelineError when the PPQ would exceed 65,535 or a tick of the song would not fit its 32 bits.
unsigned TickMultiplier(const StandardMidiFile& midi);

// Holds where the file says nothing: 120 quarter notes a minute.
inline constexpr unsigned kDefaultMicrosecondsPerQuarter = 500'000;

}  // namespace tesk_midi
