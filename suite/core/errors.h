#pragma once

#include <stdexcept>
#include <string>

namespace tesk_ext {

// There is no marker after the position. For those who walk through markers; the engine does not.
class NoNextMarker : public std::runtime_error {
 public:
  explicit NoNextMarker(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace tesk_ext
