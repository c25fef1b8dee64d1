#pragma once

#include <stdexcept>
#include <string>

// There is no song after, or before, the one asked about.
class EndOfShow : public std::out_of_range {
 public:
  explicit EndOfShow(const std::string& message) : std::out_of_range(message) {}
};
class StartOfShow : public std::out_of_range {
 public:
  explicit StartOfShow(const std::string& message) : std::out_of_range(message) {}
};

// A show cannot be set up.
class PlayerWrapperError : public std::runtime_error {
 public:
  explicit PlayerWrapperError(const std::string& message) : std::runtime_error(message) {}
};

// A song's audio file has no song in the show data.
class MP3NoMatchError : public PlayerWrapperError {
 public:
  explicit MP3NoMatchError(const std::string& message) : PlayerWrapperError(message) {}
};
