#pragma once

#include <stdexcept>

namespace exc {

// An internal invariant does not hold: a fault of the program, not of its caller or its data.
class ExAssertionError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

}  // namespace exc
