#pragma once

#include <stdexcept>
#include <string>

// The current song has no decoded audio, or there is no current song.
class SongNotLoaded : public std::runtime_error {
 public:
  explicit SongNotLoaded(const std::string& message) : std::runtime_error(message) {}
};
