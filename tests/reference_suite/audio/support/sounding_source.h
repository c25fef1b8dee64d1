#pragma once

#include <algorithm>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"

// A song in memory, silent before its beginning and after its end.
class SoundingSource : public tesk_audio::FrameSource {
 public:
  SoundingSource(std::vector<float> samples, unsigned channels)
      : samples_(std::move(samples)), channels_(channels) {}

  void ReadAt(long long index, float* frames, std::size_t count) override {
    const auto size = static_cast<long long>(samples_.size() / channels_);
    for (std::size_t i = 0; i < count; ++i) {
      const long long frame = index + static_cast<long long>(i);
      for (unsigned channel = 0; channel < channels_; ++channel) {
        const bool sounds = frame >= 0 && frame < size;
        *frames++ = sounds ? samples_[static_cast<std::size_t>(frame) * channels_ + channel] : 0.0F;
      }
    }
  }

 private:
  std::vector<float> samples_;
  unsigned channels_;
};
