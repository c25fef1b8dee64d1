#pragma once

#include <cstdint>
#include <vector>

#include "host/demo/score/score.h"

namespace orbel::host::demo {

// The score as a Standard MIDI File of type 1, one track per part behind the one with tempos and meters.
std::vector<std::uint8_t> MidiFileOf(const Score& score);

}  // namespace orbel::host::demo
