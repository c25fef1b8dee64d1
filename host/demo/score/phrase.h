#pragma once

#include <string_view>

#include "host/demo/score/score.h"

namespace orbel::host::demo {

// Writes the notes of `phrase` into `part`, one behind the other from `start`; returns the tick behind the
// last.
//
// A phrase is a row of words "PITCHES:QUARTERS": "F#5:1.5" a note of one and a half quarters, "D4+A4:2" two
// notes together, "-:1" a rest. A mark may follow: ' staccato (half as long), _ tied over (full length), >
// accented, < held back. Notes without one sound for nine tenths of their length. Throws std::logic_error,
// which quotes the word, for a word that means nothing.
Tick Play(Part& part, const Score& score, Tick start, std::string_view phrase, int velocity);

// Writes a rhythm on one key: each character is `step` quarters long; 'X' accented, 'x' played, 'o' soft, '.'
// not.
Tick Beat(Part& part, const Score& score, Tick start, int key, std::string_view rhythm, double step,
          int velocity);

// MIDI key of a pitch such as "C4" (60), "F#5", "Bb3".
int KeyOf(std::string_view pitch);

}  // namespace orbel::host::demo
