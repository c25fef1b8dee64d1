#pragma once

#include <cstddef>
#include <vector>

#include "reference_suite/audio/output/cross_fade.h"
#include "reference_suite/audio/output/stretch_path.h"
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
  // What they became for the device: as many, unless they were stretched.
  std::size_t deviceFrames = 0;
  StretchFactors factors;
  // The position had been moved by somebody else since the last step: a seek.
  bool moved = false;
  // A jump was taken. With Caesura and End it led there.
  bool jumped = false;
  long long jumpFrom = 0;
  long long jumpTo = 0;
};

// One step of rendering: plans a read, executes a jump that is due, reads exactly what was planned,
// cross-fades after a jump, and brings it to the tempo and the key in force. The same for every output, so
// that what is rendered into a file is what is heard, but for what a device does not wait for (StretchPace).
//
// Units      frames of song audio, unscaled; of the device where it says so.
// Threads    one at a time (the output sees to it).
// Locks      the player's read-samples lock for the whole step; given up when Run returns.
// Render     at tempo scale 1 and transposition 0 it allocates nothing after construction, unless it throws;
//            otherwise what the stretcher does when it begins and when a factor changes.
class RenderStep {
 public:
  // `crossfadeMs` 0 makes jumps bit-exact splices where nothing is stretched. `pace`: InTime where a device
  // waits for what is rendered. `tailFrames`: of what is dropped, for who has nothing rendered ahead that
  // could fade out; no more than GetQuantum().
  RenderStep(AudioPlayerOutputInterface& player, unsigned channels, double rateHz, double crossfadeMs,
             StretchQuality quality = StretchQuality::Faster, StretchPace pace = StretchPace::InTime,
             std::size_t tailFrames = 0);

  // Asked for in every plan, and never the rest of an earlier one: more than two ticks, whose length is at
  // most 2.5 ms, so that a read can always end on the first frame of a cue.
  std::size_t GetQuantum() const { return quantum_; }

  // The most frames for the device that a step can give.
  std::size_t GetMostFrames() const { return path_.GetMostFrames(); }

  // Throws what the player throws.
  StepResult Run(StepGate& gate);
  // The frames of the last step for the device, interleaved; the caller may change them.
  float* Frames() { return path_.Frames(); }

  // What would have come next, as loud as it was, and now does not: after a step that found the position
  // moved, and at any other time after DropTail, which has the next step begin afresh. Empty when nothing was
  // being heard, or what comes next is a caesura, the end or another song.
  float* Tail() { return tail_.data(); }
  std::size_t GetTailFrames() const { return tailFrames_; }
  void DropTail();

  // The next step begins afresh: no cross-fade goes on, and no move is noticed.
  void Reset();
  // The position was moved with our knowledge (by an attacca): the next step takes it as it is.
  void ForgetPosition();
  // Whether somebody else has moved the position since the last step. Asks the player, without the lock.
  bool PositionHasMoved() { return expectedIndex_ != kUnknown && expectedIndex_ != player_.GetSampleIndex(); }

 private:
  static constexpr long long kUnknown = -1;

  long long Plan_();
  long long PlanFromLanding_(long long count);
  StretchFactors AskFactors_();
  void Read_(long long count);
  void NoteWhereTheTailStops_();
  void DropTail_();

  AudioPlayerOutputInterface& player_;
  unsigned channels_;
  std::size_t quantum_;
  std::vector<float> frames_;
  CrossFade crossFade_;
  StretchPath path_;
  bool isNextSong_ = false;             // an attacca has led here
  long long expectedIndex_ = kUnknown;  // where the last step left the position
  std::vector<float> tail_;
  std::size_t tailFrames_ = 0;
  long long tailStop_ = kUnknown;  // the caesura at or behind the position
};

}  // namespace tesk_audio
