#pragma once

#include <stdexcept>

namespace orbel::host {

// The demo was not written, or not whole. The text names the file or folder and what to do.
class DemoError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace orbel::host
