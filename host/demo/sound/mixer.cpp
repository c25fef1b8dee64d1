#include "host/demo/sound/mixer.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "host/demo/sound/room.h"

namespace orbel::host::demo {

void Mixer::Add(const Sound& note, std::size_t start, const Place& place) {
  if (start >= direct_.FrameCount()) return;
  const double angle = (static_cast<double>(place.pan) + 1.0) * std::numbers::pi / 4.0;
  const float left = place.level * static_cast<float>(std::cos(angle));
  const float right = place.level * static_cast<float>(std::sin(angle));
  const std::size_t count = std::min(note.size(), direct_.FrameCount() - start);
  for (std::size_t index = 0; index < count; ++index) {
    direct_.left[start + index] += left * note[index];
    direct_.right[start + index] += right * note[index];
    room_.left[start + index] += place.room * left * note[index];
    room_.right[start + index] += place.room * right * note[index];
  }
}

StereoSound Mixer::Finish(double roomSeconds) {
  Room(roomSeconds).Fill(room_);
  for (std::size_t index = 0; index < direct_.FrameCount(); ++index) {
    direct_.left[index] += room_.left[index];
    direct_.right[index] += room_.right[index];
  }
  room_ = StereoSound();
  return std::exchange(direct_, StereoSound());
}

}  // namespace orbel::host::demo
