#pragma once

#include <stdexcept>
#include <string>

namespace exc {

// A system call that must return 0 did not.
class NOERRError : public std::runtime_error {
 public:
  explicit NOERRError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace exc
