#pragma once

#include <string>
#include <vector>

#include "reference_suite/midi/show_folder/file_problems.h"
#include "reference_suite/midi/show_folder/written_song_log.h"
#include "suite/midi/timeline.h"

namespace tesk_midi {

// A cue at its ticks of the song.
struct PlacedCue {
  const WrittenCue* cue = nullptr;  // never null
  unsigned begin = 0;
  unsigned end = 0;  // of a range; otherwise `begin`
};

// Looks up where the audio begins and ends and writes it into the timeline. What does not exist, or
// contradicts, is added to `problems`, and the timeline stays as it was.
void PlaceAudio(const WrittenSongLog& log, FileProblems* problems, TL::Timeline* timeline);

// Looks up the cues of a log, which must outlive the result, in the song's timeline. Positions that do not
// exist or lie outside the song, and ranges that end before they begin, are added to `problems`, and their
// cues are left out.
std::vector<PlacedCue> PlaceCues(const WrittenSongLog& log, const TL::Timeline& timeline,
                                 FileProblems* problems);

// Adds an error for every two cues that contradict each other, naming both.
void CheckConflicts(const std::vector<PlacedCue>& cues, FileProblems* problems);

// "\"9\" to \"13\"" or "\"29.3\"", for messages.
std::string ShownRange(const WrittenCue& cue);

}  // namespace tesk_midi
