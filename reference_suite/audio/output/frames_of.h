#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tesk_audio {

// The frames of a time in milliseconds, to the nearest; none when it is negative.
inline std::size_t FramesOf(double milliseconds, double rateHz) {
  return static_cast<std::size_t>(std::lround(std::max(0.0, milliseconds) * rateHz / 1000.0));
}

}  // namespace tesk_audio
