#pragma once

#include <cstddef>
#include <vector>

namespace orbel::host::demo {

inline constexpr unsigned kSampleRate = 48'000;  // frames per second, throughout the demo

// One note, mono; full scale is 1, but nothing is limited before the master.
using Sound = std::vector<float>;

struct StereoSound {
  std::vector<float> left;
  std::vector<float> right;

  explicit StereoSound(std::size_t frameCount = 0) : left(frameCount), right(frameCount) {}
  std::size_t FrameCount() const { return left.size(); }
};

inline std::size_t FramesOfSeconds(double seconds) {
  return static_cast<std::size_t>(seconds * kSampleRate);
}

}  // namespace orbel::host::demo
