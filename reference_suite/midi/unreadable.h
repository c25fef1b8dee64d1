#pragma once

#include <cerrno>

namespace tesk_midi {

// What cures a file that cannot be opened or read, for what the system says of it; without the full stop.
inline const char* CureOfUnreadable(int error) {
  return error == ELOOP ? "replace the link, which leads in a circle, by the file itself"
                        : "see that the file is there and that it may be read";
}

}  // namespace tesk_midi
