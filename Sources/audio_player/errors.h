#pragma once

#include <stdexcept>

// The current song has no decoded audio, or there is no current song.
class SongNotLoaded : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
