#pragma once

#include <utility>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"

// One sound on one channel, or on two of which the second has it upside down; silent outside.
class RecordedSong : public tesk_audio::FrameSource {
 public:
  RecordedSong(std::vector<float> sound, unsigned channels) : sound_(std::move(sound)), channels_(channels) {}

  void ReadAt(long long index, float* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i, ++index) {
      const bool sounds = index >= 0 && index < static_cast<long long>(sound_.size());
      const float frame = sounds ? sound_[static_cast<std::size_t>(index)] : 0.0F;
      *frames++ = frame;
      if (channels_ == 2) *frames++ = -frame;
    }
  }

 private:
  std::vector<float> sound_;
  unsigned channels_;
};
