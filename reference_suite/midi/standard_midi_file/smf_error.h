#pragma once

#include <stdexcept>

namespace tesk_midi {

// A file that is refused. The text names the file, the byte at which reading stopped, what was found there
// and what to do about it; it is complete as it stands and meant for a person.
class SmfError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tesk_midi
