#pragma once

#include <sys/stat.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>

#include "suite/audio/create.h"

namespace tesk_audio {

// What was found out about audio files that nobody has touched since: a show is looked at when it is opened,
// when its player is built, and again when a player has to be built anew.
//
// Threads    ANY.
// Locks      one of its own, innermost.
class ProbedFiles {
 public:
  static ProbedFiles& Instance();

  // Nothing when the file is another one than the one that was kept, or has changed.
  std::optional<AudioFileInfo> Find(const struct stat& file) const;
  // `now`: of the clock that `file` has its times from. Nothing is kept of a file that changed less than two
  // seconds ago: another change could still be given the same time.
  void Keep(const struct stat& file, const AudioFileInfo& info, const timespec& now);

 private:
  // Device, inode, size, time of the last change of anything about it.
  using Key = std::tuple<dev_t, ino_t, off_t, time_t, long>;
  static Key KeyOf(const struct stat& file);

  mutable std::mutex mutex_;
  std::map<Key, AudioFileInfo> known_;
};

}  // namespace tesk_audio
