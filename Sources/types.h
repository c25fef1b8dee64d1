#pragma once

// Ticks are the song's MIDI ticks counted from its start. Samples are audio frames counted from the first
// frame of the decoded audio, unscaled: as recorded, whatever the tempo scale in force.
using TickIndex = unsigned;
using SampleCount = long long;
static_assert(sizeof(TickIndex) == 4 && sizeof(SampleCount) == 8,
              "positions are 32-bit ticks and 64-bit samples");
