#pragma once

#include <stdexcept>
#include <string>

#include "suite/midi/song_data.h"

namespace tesk_midi {

// A position that does not exist in the song, or cannot be read. what() says which and why.
class PositionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "17", "17.3", "17.3.120", "end", "tick:30720" to a tick of the song. Throws PositionError.
unsigned ParsePosition(const SongData& song, const std::string& text);

// A tick as "17.3.120", always with all three parts.
std::string PositionToString(const SongData& song, unsigned tick);

}  // namespace tesk_midi
