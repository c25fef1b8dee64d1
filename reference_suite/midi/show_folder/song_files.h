#pragma once

#include <string>
#include <vector>

#include "suite/midi/load_show.h"

namespace tesk_midi {

// The files of one song, by their names in the folder songs/.
struct SongFiles {
  std::string number;
  std::string name;
  std::string midi;
  std::string toml;  // empty: none
};

// Finds the songs among the entries of songs/: every "NUMBER NAME.mid", with its "NUMBER NAME.toml". Names
// that cannot be understood and numbers that are taken are added to `problems`. Files of other kinds are none
// of ours; hidden ones are not among the entries.
std::vector<SongFiles> FindSongFiles(const std::vector<std::string>& entries, std::vector<Problem>* problems);

}  // namespace tesk_midi
