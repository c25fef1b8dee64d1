#pragma once

#include <optional>
#include <string>
#include <vector>

#include "reference_suite/midi/timeline/position_text.h"
#include "reference_suite/midi/toml/toml_node.h"
#include "suite/core/change_log_events.h"

namespace tesk_midi {

// A position in a file, not yet looked up in the song.
struct WrittenPosition {
  TextPlace place;
  std::string shown;  // as messages call it: "\"17.3\"", "tick 30720"
  WrittenPlace value;
};

enum class CueKind { Tempo, Transpose, Vamp, Safety, Repeat, Cut, Caesura, Marker, Click, Page };

// The word by which a kind is written and spoken of: "vamp".
const char* CueWord(CueKind kind);

// A cue as it is written. Which fields hold something follows from the kind.
struct WrittenCue {
  CueKind kind = CueKind::Caesura;
  TextPlace place;
  WrittenPosition begin;               // "at" or "from"
  std::optional<WrittenPosition> end;  // "to"
  double scale = 1.0;
  int number = 0;  // passes, semitones or the page
  CL::VampExit exit = CL::VampExit::EndOfPass;
  std::string name;
};

// A song's TOML file, read but not yet held against the song.
struct WrittenSongLog {
  bool skip = false;
  bool attacca = false;
  int firstBar = 1;
  std::optional<WrittenPosition> audioStart;
  std::optional<WrittenPosition> audioEnd;
  std::vector<WrittenCue> cues;  // complete ones only, in the order of the file
};

}  // namespace tesk_midi
