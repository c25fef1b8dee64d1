#pragma once

#include <cstddef>

namespace orbel::host::demo {

// How the loudness of a note goes, in seconds and as parts of its full level.
struct EnvelopeShape {
  double attack = 0.005;
  double decay = 1.0;    // to a third of the way that is left down to `sustain`
  double sustain = 0.0;  // 0 for what is struck or plucked
  double release = 0.1;  // from the end of the note to silence
};

// Loudness from 0 to 1, frame by frame: rises, falls to its sustain, and dies away behind the held length.
class Envelope {
 public:
  Envelope(const EnvelopeShape& shape, double heldSeconds);

  // Frames until silence: the held ones and the release.
  std::size_t FrameCount() const { return heldFrames_ + releaseFrames_; }

  float Next();

 private:
  std::size_t heldFrames_;
  std::size_t releaseFrames_;
  std::size_t frame_ = 0;
  float attackStep_;
  float decayFactor_;
  float sustain_;
  float level_ = 0.0F;
  bool attacking_ = true;
};

}  // namespace orbel::host::demo
