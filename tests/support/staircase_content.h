#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>

#include "suite/audio/audio_sample_content.h"

namespace test_support {

// Audio in which every frame says where it lies: all channels of frame n hold the value n, so that a wrong
// sample names itself. Floats hold whole numbers exactly up to 2^24.
class StaircaseContent : public tesk_audio::AudioSampleContent {
 public:
  explicit StaircaseContent(unsigned frames, double rateHz = 44100.0, unsigned channels = 1)
      : frames_(frames), rateHz_(rateHz), channels_(channels) {
    ++alive;
  }
  ~StaircaseContent() override { --alive; }
  StaircaseContent(const StaircaseContent&) = delete;
  StaircaseContent& operator=(const StaircaseContent&) = delete;

  unsigned Read(long long start, long long* count, void* buffer) const override {
    if (start < 0) *count = 0;
    *count = std::clamp<long long>(frames_ - start, 0, *count);
    float* out = static_cast<float*>(buffer);
    for (long long frame = start; frame < start + *count; ++frame) {
      for (unsigned channel = 0; channel < channels_; ++channel) *out++ = static_cast<float>(frame);
    }
    return static_cast<unsigned>(*count);
  }
  unsigned GetSampleCount() const override { return frames_; }
  double GetSampleRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return channels_; }

  // How many there are in the process.
  static inline std::atomic<int> alive{0};

 private:
  unsigned frames_;
  double rateHz_;
  unsigned channels_;
};

}  // namespace test_support
