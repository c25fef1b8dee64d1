#pragma once

#include <stdexcept>
#include <string>

// A recovery would resume at or after the end of the song.
class RecoveryReachedEndOfSong : public std::runtime_error {
 public:
  explicit RecoveryReachedEndOfSong(const std::string& message) : std::runtime_error(message) {}
};
