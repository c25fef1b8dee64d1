#pragma once

#include <string>
#include <vector>

namespace orbel::host {

struct NewSong {
  std::string number;
  std::string name;
  std::string midiPath;
  std::string audioPath;
  bool replace = false;  // take the place of a song with the same number
};

// Puts a song into a show folder and creates the folder when there is none. The files are read and checked
// first and appear under their names complete. Returns what was written, relative to the show folder. Throws
// Failure, also when the number is taken and `replace` is off, and the errors of show and audio.
std::vector<std::string> AddSong(const std::string& showPath, const NewSong& song);

}  // namespace orbel::host
