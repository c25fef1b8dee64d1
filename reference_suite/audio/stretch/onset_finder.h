#pragma once

#include <cstddef>
#include <vector>

#include "reference_suite/audio/stretch/frame_source.h"

namespace tesk_audio {

// Tells where a sound begins that is known to be an attack. AttackWatch sees an attack when it has become
// loud; what rises softly has begun up to some milliseconds before, and stretched, these are several times as
// many.
//
// Units      song frames; interleaved.
// Threads    one at a time.
// Render     allocates nothing after construction.
class OnsetFinder {
 public:
  OnsetFinder(FrameSource& source, double rateHz, unsigned channels);

  // Where the rise begins that goes on at `seen`; `seen` itself where nothing rises towards it.
  long long Find(long long seen);

 private:
  // Of every slice: the power of the frames, or of the steps from each to the next.
  void MeasureFrames_();
  void MeasureSteps_();
  // How many slices the rise reaches back from the last one.
  std::size_t ReachBack_() const;

  FrameSource& source_;
  unsigned channels_;
  std::size_t slice_;   // frames
  std::size_t most_;    // slices that a rise reaches back at most,
  std::size_t before_;  // and those before them, which it must be louder than
  std::vector<float> frames_;
  std::vector<double> powers_;
};

}  // namespace tesk_audio
