#pragma once

#include <string>
#include <vector>

#include "reference_suite/midi/standard_midi_file/standard_midi_file.h"
#include "reference_suite/midi/timeline/timeline_error.h"
#include "suite/core/change_log_events.h"
#include "suite/midi/timeline.h"

namespace tesk_midi {

// What a song's MIDI file says, in ticks of the song as loaded.
struct BuiltTimeline {
  unsigned short pulsesPerQuarterNote = 0;
  TL::Timeline timeline;  // without pages and without an audio end; the audio starts at tick 0
  std::vector<CL::Marker> markers;
  std::vector<std::string> warnings;  // sentences
};

// Multiplies every tick, adds what holds where the file says nothing (120 quarter notes a minute, of which
// the file's reader warns, and 4/4), and lays out the bars, the first of which has the number `firstBar`, 0
// or more. Of two tempos, meters or keys at one tick the later one holds.
//
// Throws TimelineError when the song has no length, or does not fit its PPQ, its ticks or the number of bars.
BuiltTimeline BuildTimeline(const StandardMidiFile& midi, int firstBar);

// A loop that ends where the song ends would never be met: the end moves two ticks on. `loopEnd` is where the
// last loop ends. Changes the audio end where there is one, and the MIDI end when it would lie before that.
void MoveEndBehindLoop(TL::Timeline* timeline, unsigned loopEnd);

// The end of the song for playback: the audio end, or the end of the MIDI where none is given.
unsigned GetPlaybackEnd(const TL::Timeline& timeline);

}  // namespace tesk_midi
