#pragma once

#include <vector>

#include "reference_suite/midi/show_folder/placed_cue.h"
#include "suite/midi/song_log.h"
#include "suite/midi/timeline.h"

namespace tesk_midi {

// Puts a song's cues where they are looked for: loops, cuts, caesuras and the rest into the log, pages into
// the timeline, every sequence in ascending ticks. `midiMarkers` join those of the log, before them at one
// tick. A loop that ends with the song moves the end of the timeline two ticks on.
CL::SongLog BuildSongLog(const WrittenSongLog& written, std::vector<PlacedCue> cues,
                         const std::vector<CL::Marker>& midiMarkers, TL::Timeline* timeline);

}  // namespace tesk_midi
