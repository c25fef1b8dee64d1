#pragma once

#include <map>
#include <string>

#include "suite/midi/song_log.h"
#include "suite/utility/numeric_string_compare.h"

namespace CL {

// The change logs of a show, by song number. A song without an entry has an empty log.
class ChangeLog {
 public:
  // The log of a song; a shared empty one when there is none.
  const SongLog& GetSongLog(const std::string& songNumber) const;
  void SetSongLog(const std::string& songNumber, SongLog log);

 private:
  std::map<std::string, SongLog, exc::NumericStringCompare> songLogs_;
};

}  // namespace CL
