#pragma once

#include <cstddef>
#include <vector>

#include "reference_suite/audio/output/cross_fade.h"
#include "suite/audio/output_interface.h"

namespace tesk_audio {

// Asked under the read-samples lock, when the position can no longer move: whether the step may begin.
class StepGate {
 public:
  virtual ~StepGate() = default;
  virtual bool MayStep() = 0;
};

// What one render step found.
enum class StepOutcome {
  Refused,  // the gate was shut; nothing was planned
  Frames,   // `frames` frames were read
  Caesura,  // playback stops here and waits
  End,      // of the song
};

struct StepResult {
  StepOutcome outcome = StepOutcome::Refused;
  long long sampleIndex = 0;  // first frame read; the position itself at a caesura and at the end
  long long frames = 0;
  // The position had been moved by somebody else since the last step: a seek.
  bool moved = false;
  // A jump was taken. With Caesura and End it led there.
  bool jumped = false;
  long long jumpFrom = 0;
  long long jumpTo = 0;
};

// One step of rendering: plans a read, executes a jump that is due, reads exactly what was planned, and
// cross-fades after a jump. The same for every output, so that what is rendered into a file is what is heard.
//
// Units      frames of song audio, unscaled.
// Threads    one at a time (the output sees to it).
// Locks      the player's read-samples lock for the whole step; given up when Run returns.
// Render     allocates nothing after construction, unless it throws.
class RenderStep {
 public:
  // `crossfadeMs` 0 makes jumps bit-exact splices.
  RenderStep(AudioPlayerOutputInterface& player, unsigned channels, double rateHz, double crossfadeMs);

  // Asked for in every plan, and never the rest of an earlier one: more than two ticks, whose length is at
  // most 2.5 ms, so that a read can always end on the first frame of a cue.
  std::size_t GetQuantum() const { return quantum_; }

  // Throws TESKAudioError when the song asks for a tempo scale or a transposition, which needs a
  // time-stretcher; and what the player throws.
  StepResult Run(StepGate& gate);
  // The frames of the last step, interleaved; the caller may change them.
  float* Frames() { return frames_.data(); }

  // The next step begins afresh: no cross-fade goes on, and no move is noticed.
  void Reset();
  // The position was moved with our knowledge (by an attacca): the next step takes it as it is.
  void ForgetPosition() { expectedIndex_ = kUnknown; }
  // Whether somebody else has moved the position since the last step. Asks the player, without the lock.
  bool PositionHasMoved() { return expectedIndex_ != kUnknown && expectedIndex_ != player_.GetSampleIndex(); }

 private:
  static constexpr long long kUnknown = -1;

  long long Plan_();
  long long PlanFromLanding_(long long count);
  // Takes the frames that would have come at `from`, to fade out under what comes instead.
  void BeginCrossFade_(long long from);
  void RequireNoStretching_();
  void Read_(long long count);

  AudioPlayerOutputInterface& player_;
  unsigned channels_;
  std::size_t quantum_;
  std::vector<float> frames_;
  CrossFade crossFade_;
  long long expectedIndex_ = kUnknown;  // where the last step left the position
};

}  // namespace tesk_audio
