#pragma once

#include "exc/lock/lockable.h"

namespace tesk_audio {

// libsndfile keeps the reason why a file could not be opened in one place for the whole process, and writes
// to it in every opening. So files are opened one at a time, and the reason is read before the next one.
//
// Threads    ANY. Innermost; not held while frames are read or written.
inline exc::Lockable& SndfileOpening() {
  static exc::Lockable opening("SndfileOpening");
  return opening;
}

}  // namespace tesk_audio
