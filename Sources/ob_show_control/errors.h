#pragma once

#include <stdexcept>

// A recovery would resume at or after the end of the song.
class RecoveryReachedEndOfSong : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
