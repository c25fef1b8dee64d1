#pragma once

#include <stdexcept>

// There is no song after, or before, the one asked about.
class EndOfShow : public std::out_of_range {
 public:
  using std::out_of_range::out_of_range;
};
class StartOfShow : public std::out_of_range {
 public:
  using std::out_of_range::out_of_range;
};

// A show cannot be set up.
class PlayerWrapperError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A song's audio file has no song in the show data.
class MP3NoMatchError : public PlayerWrapperError {
 public:
  using PlayerWrapperError::PlayerWrapperError;
};
