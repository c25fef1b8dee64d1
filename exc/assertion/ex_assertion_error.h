#pragma once

#include <stdexcept>
#include <string>

namespace exc {

// An internal invariant does not hold: a fault of the program, not of its caller or its data.
class ExAssertionError : public std::logic_error {
 public:
  explicit ExAssertionError(const std::string& message) : std::logic_error(message) {}
};

}  // namespace exc
