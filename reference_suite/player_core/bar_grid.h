#pragma once

namespace tesk_midi {
class SongData;
}

// Lengths on a song's grid of bars and beats. A song without bars counts in 4/4.
namespace player_core {

// Ticks of one beat, and of the whole bar, at `tick`, fractions of a tick left out. Greater than 0.
unsigned GetTicksPerBeat(const tesk_midi::SongData& song, unsigned tick);
unsigned GetTicksPerBar(const tesk_midi::SongData& song, unsigned tick);

}  // namespace player_core
