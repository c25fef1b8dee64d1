#pragma once

#include <cstddef>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"
#include "reference_suite/audio/stretch/in_between_reader.h"

namespace tesk_audio {

// Frames that go in come out faster, and so higher, fewer of them.
//
// Units      interleaved frames.
// Threads    one at a time.
// Render     allocates nothing after construction, as long as what has been put in is taken.
class RaisedFrames : private FrameSource {
 public:
  // `mostFrames` are put in at a time.
  RaisedFrames(unsigned channels, std::size_t mostFrames);

  // Forgets everything. `step`: of frames that go in, for one that comes out; at least 1.
  void Begin(double step);
  void Put(const float* frames, std::size_t count);
  // As many as there are, at most `room`; how many that is.
  std::size_t Take(float* frames, std::size_t room);
  // Frames that have gone in and are kept back, for their neighbours' sake.
  static constexpr double kKeptBack = InBetweenReader::kReach;

 private:
  void ReadAt(long long index, float* frames, std::size_t count) override;
  void ForgetWhatIsPassed_();

  unsigned channels_;
  std::size_t most_;  // read at a time
  std::vector<float> held_;
  std::size_t count_ = 0;  // frames held
  double place_ = 0.0;     // among them, of the next to come out
  double step_ = 1.0;
  InBetweenReader reader_;
};

}  // namespace tesk_audio
