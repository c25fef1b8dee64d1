#include "host/demo/sound/room.h"

#include <cmath>

namespace orbel::host::demo {

namespace {

// Lengths in frames without a common factor, 30 to 60 ms, so that no echo is heard twice at one time.
constexpr std::array<std::size_t, 8> kLengths{1433, 1601, 1867, 2053, 2251, 2399, 2617, 2797};
constexpr float kDarkness = 0.38F;  // part of each round that the walls swallow of the high tones
// Keeps what dies away out of the range of numbers with which processors are slow.
constexpr float kFloor = 1e-18F;

}  // namespace

Room::Room(double seconds) {
  for (std::size_t index = 0; index < kLineCount; ++index) {
    lines_[index].samples.assign(kLengths[index], 0.0F);
    lines_[index].loss = static_cast<float>(
        std::pow(10.0, -3.0 * static_cast<double>(kLengths[index]) / (seconds * kSampleRate)));
  }
}

void Room::Scatter_(Frame& frame) {
  for (std::size_t span = 1; span < kLineCount; span *= 2) {
    for (std::size_t first = 0; first < kLineCount; ++first) {
      if ((first & span) != 0) continue;
      const float sum = frame[first] + frame[first + span];
      frame[first + span] = frame[first] - frame[first + span];
      frame[first] = sum;
    }
  }
  for (float& value : frame) value *= 0.35355339F;  // one over the root of eight
}

void Room::Fill(StereoSound& sound) {
  for (std::size_t index = 0; index < sound.FrameCount(); ++index) {
    Frame frame{};
    for (std::size_t line = 0; line < kLineCount; ++line) {
      Line& delay = lines_[line];
      delay.darkened += (1.0F - kDarkness) * (delay.samples[delay.position] - delay.darkened);
      frame[line] = delay.loss * delay.darkened + kFloor;
    }
    const float left = frame[0] - frame[2] + frame[4] - frame[6];
    const float right = frame[1] - frame[3] + frame[5] - frame[7];
    Scatter_(frame);
    for (std::size_t line = 0; line < kLineCount; ++line) {
      Line& delay = lines_[line];
      delay.samples[delay.position] =
          frame[line] + 0.5F * (line % 2 == 0 ? sound.left[index] : sound.right[index]);
      delay.position = delay.position + 1 == delay.samples.size() ? 0 : delay.position + 1;
    }
    sound.left[index] = left;
    sound.right[index] = right;
  }
}

}  // namespace orbel::host::demo
