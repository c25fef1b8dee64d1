#include "suite/midi/change_log.h"

#include <utility>

namespace CL {

const SongLog& ChangeLog::GetSongLog(const std::string& songNumber) const {
  static const SongLog empty;
  const auto found = songLogs_.find(songNumber);
  return found == songLogs_.end() ? empty : found->second;
}

void ChangeLog::SetSongLog(const std::string& songNumber, SongLog log) {
  songLogs_.insert_or_assign(songNumber, std::move(log));
}

}  // namespace CL
