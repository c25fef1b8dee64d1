#pragma once

#include <cstddef>
#include <vector>

#include "reference_suite/audio/decode/frame_store.h"

struct soxr;

namespace tesk_audio {

// Converts a stream of frames to another rate on its way into a store. The result has exactly as many frames
// as the input lasts at the new rate, rounded to the nearest, halves up; frame 0 stays frame 0.
//
// Threads    one at a time.
// Errors     TESKAudioError when the converter cannot be made or fails; std::bad_alloc.
class Resampler {
 public:
  Resampler(double fromHz, double toHz, FrameStore& store);
  ~Resampler();
  Resampler(const Resampler&) = delete;
  Resampler& operator=(const Resampler&) = delete;

  void Put(const float* frames, std::size_t count);
  // Once, after the last frame.
  void Finish();

 private:
  // Feeds `count` frames, or the end when `frames` is null, and stores what comes out.
  void Process_(const float* frames, std::size_t count);

  double fromHz_;
  double toHz_;
  FrameStore& store_;
  soxr* converter_ = nullptr;
  std::vector<float> output_;
  long long taken_ = 0;
};

// How long `frames` are at another rate.
long long ResampledLength(long long frames, double fromHz, double toHz);

}  // namespace tesk_audio
