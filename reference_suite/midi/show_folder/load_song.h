#pragma once

#include <optional>
#include <string>
#include <vector>

#include "reference_suite/midi/show_folder/song_files.h"
#include "suite/midi/load_show.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"

namespace tesk_midi {

struct LoadedSong {
  SongData data;
  CL::SongLog log;
  bool isLeftOut = false;  // a file of the song cannot be read: the data only holds its number and name
};

// Where the problems of songs go: what refuses the show, and what only leaves one song out.
struct SongProblems {
  std::vector<Problem> refusing;  // with the warnings
  std::vector<Problem> leavingOut;
};

// Reads one song of the show at `showPath`. Empty when a file's content is wrong; `problems` say what.
std::optional<LoadedSong> LoadSong(const std::string& showPath, const SongFiles& files,
                                   SongProblems* problems);

}  // namespace tesk_midi
