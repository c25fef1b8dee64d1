#include "host/demo/sound/envelope.h"

#include <algorithm>
#include <cmath>

#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

Envelope::Envelope(const EnvelopeShape& shape, double heldSeconds)
    : heldFrames_(FramesOfSeconds(heldSeconds)),
      releaseFrames_(std::max<std::size_t>(FramesOfSeconds(shape.release), 1)),
      attackStep_(static_cast<float>(1.0 / std::max(1.0, shape.attack * kSampleRate))),
      decayFactor_(static_cast<float>(std::exp(-1.0 / (shape.decay * kSampleRate)))),
      sustain_(static_cast<float>(shape.sustain)) {}

float Envelope::Next() {
  if (attacking_) {
    level_ = std::min(level_ + attackStep_, 1.0F);
    attacking_ = level_ < 1.0F;
  } else {
    level_ = sustain_ + (level_ - sustain_) * decayFactor_;
  }
  const std::size_t frame = frame_++;
  if (frame < heldFrames_) return level_;
  // Squared, so that the ear hears an even fall and the last frame is silent.
  const float left = 1.0F - static_cast<float>(frame + 1 - heldFrames_) / static_cast<float>(releaseFrames_);
  return level_ * left * left;
}

}  // namespace orbel::host::demo
