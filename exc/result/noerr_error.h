#pragma once

#include <stdexcept>

namespace exc {

// A system call that must return 0 did not.
class NOERRError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace exc
