#pragma once

#include <cstddef>
#include <vector>

namespace tesk_audio {

// Lets frames that would have come next fade out under those that come instead, while the new ones fade in,
// at equal power. Of sounds that are alike it keeps the power too, when it is told how much they are; sounds
// that weaken each other stay weaker for a moment.
//
// Units      interleaved frames.
// Threads    one at a time.
// Render     allocates nothing after construction.
class CrossFade {
 public:
  // `frames` is its usual length, 0 switches it off; `most` the longest that Begin is asked for, and Scale.
  CrossFade(unsigned channels, std::size_t frames, std::size_t most = 0);

  std::size_t GetLength() const { return usual_; }
  bool IsActive() const { return position_ < length_; }

  // Where the caller puts the outgoing frames, as many as the fade will have, before Begin.
  float* Outgoing() { return fresh_.data(); }
  // A fade under way goes on inside those, so that nothing is cut off. Begin does so by itself; before it for
  // who lays something else over them, which is to be heard as it is.
  void GoOnInOutgoing(std::size_t frames);
  // Starts with those.
  void Begin();
  // Without a bend at either end. `correlation` of what goes out with what comes in, from -1 to 1.
  void Begin(std::size_t frames, double correlation);
  // The largest second difference, in `within` frames, of what such a fade would make of the frames that the
  // caller has put there and those that are `coming`.
  double BendWith(const float* coming, std::size_t frames, double correlation, std::size_t within) const;
  // Only the outgoing frames fade; what comes in does so at its full level.
  void BeginTail(std::size_t frames);
  // What the frames that come next, mixed, become besides: factors of frames. What there is no room for, as
  // much as `most`, is left out.
  void Scale(const float* gains, std::size_t frames);
  // Mixes the outgoing frames into the next `count` frames; leaves them alone when no fade is under way.
  void Apply(float* frames, std::size_t count);
  // The same, and nothing has happened.
  void Preview(float* frames, std::size_t count) const;
  void Cancel() { position_ = length_; }

 private:
  void Take_(std::size_t frames);
  // From `position` on; returns where that ends.
  std::size_t Mix_(float* frames, std::size_t count, std::size_t position) const;

  unsigned channels_;
  std::size_t usual_;
  std::vector<float> in_;        // gain of each frame that comes in
  std::vector<float> out_;       // and of each that goes out
  std::vector<float> fresh_;     // being put together
  std::vector<float> outgoing_;  // fading out
  std::size_t length_ = 0;
  std::size_t position_ = 0;
};

}  // namespace tesk_audio
