#pragma once

#include <stdexcept>

namespace tesk_midi {

// A MIDI file from which no song can be made. what() says what is wrong and what to do about it.
class TimelineError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tesk_midi
