#include "reference_suite/audio/output/render_step.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/output/frames_of.h"

namespace tesk_audio {

namespace {

std::size_t QuantumAt(double rateHz) {
  return std::max<std::size_t>(256, static_cast<std::size_t>(std::ceil(0.0055 * rateHz)));
}

}  // namespace

RenderStep::RenderStep(AudioPlayerOutputInterface& player, unsigned channels, double rateHz,
                       double crossfadeMs, StretchQuality quality, StretchPace pace, std::size_t tailFrames)
    : player_(player),
      channels_(channels),
      quantum_(QuantumAt(rateHz)),
      frames_(quantum_ * channels),
      crossFade_(channels, FramesOf(crossfadeMs, rateHz), StretchPath::MostFadeFrames(rateHz)),
      path_(player, crossFade_, quality, pace, rateHz, channels, quantum_),
      tail_(std::min(tailFrames, quantum_) * channels) {}

void RenderStep::Reset() {
  crossFade_.Cancel();
  path_.Drop();
  expectedIndex_ = kUnknown;
  isNextSong_ = false;
}

void RenderStep::ForgetPosition() {
  expectedIndex_ = kUnknown;
  isNextSong_ = true;
}

StepResult RenderStep::Run(StepGate& gate) {
  exc::ScopeLock lock(player_.GetReadSamplesLock());
  StepResult result;
  if (!gate.MayStep()) return result;
  const long long before = player_.GetSampleIndex();
  result.moved = expectedIndex_ != kUnknown && expectedIndex_ != before;
  if (result.moved) DropTail_();
  // A due loop or cut is known now and gone after the plan. A jump that is not announced (a safety's) shows
  // in the position alone.
  const bool announced = player_.GetJumpIsNext();
  const long long target = announced ? player_.GetJumpTargetSampleIndex() : kUnknown;
  // The plan may forget a caesura that the jump leads away from.
  long long stop = announced ? player_.GetNextCaesuraSampleIndex(before) : kUnknown;
  long long count = Plan_();
  result.sampleIndex = player_.GetSampleIndex();
  result.jumped = result.sampleIndex != before ||
                  (announced && target == before && player_.GetLastJumpSampleIndex() == before);
  if (result.jumped) {
    count = PlanFromLanding_(count);
    result.sampleIndex = player_.GetSampleIndex();
    result.jumpFrom = before;
    result.jumpTo = result.sampleIndex;
    if (!announced) stop = player_.GetNextCaesuraSampleIndex(before);
  }
  if (count <= 0) {
    const bool caesura = player_.GetNextCaesuraSampleIndex(result.sampleIndex) == result.sampleIndex;
    result.outcome = caesura ? StepOutcome::Caesura : StepOutcome::End;
    // After the wait the music begins anew.
    if (caesura) path_.Drop();
    expectedIndex_ = tailStop_ = result.sampleIndex;
    return result;
  }
  result.factors = AskFactors_();
  path_.Turn({result.sampleIndex, before, std::exchange(isNextSong_, false), stop}, result.factors);
  Read_(count);
  result.deviceFrames = path_.Render(result.sampleIndex, frames_.data(), static_cast<std::size_t>(count));
  result.outcome = StepOutcome::Frames;
  result.frames = count;
  expectedIndex_ = player_.GetSampleIndex();
  NoteWhereTheTailStops_();
  return result;
}

// Asked for now: once the position has been moved, only what lies ahead of its new place is known.
void RenderStep::NoteWhereTheTailStops_() {
  if (!tail_.empty()) tailStop_ = player_.GetNextCaesuraSampleIndex(expectedIndex_);
}

void RenderStep::DropTail() {
  exc::ScopeLock lock(player_.GetReadSamplesLock());
  DropTail_();
}

void RenderStep::DropTail_() {
  const std::size_t most = expectedIndex_ == kUnknown ? 0 : tail_.size() / channels_;
  tailFrames_ = path_.DropTail(expectedIndex_, tailStop_, tail_.data(), most);
  crossFade_.Cancel();
}

long long RenderStep::Plan_() {
  const auto request = static_cast<long long>(quantum_);
  // Never more than was asked for: the buffer ends there.
  return std::min(request, player_.GetNextReadSampleCount(SampleCount(request, 1.0L)).GetUnscaled());
}

// A plan that jumps goes on with what was left of the request at the jump, which can be less than two ticks
// and then runs past a cue right behind the landing, or ends before one on it. Nothing has been read yet:
// planning once more, with a whole quantum, ends on the cue.
long long RenderStep::PlanFromLanding_(long long count) {
  while (count > 0) {
    const long long landing = player_.GetSampleIndex();
    count = Plan_();
    if (player_.GetSampleIndex() == landing) break;
  }
  return count;
}

StretchFactors RenderStep::AskFactors_() {
  long double scale = 1.0L;
  int transposition = 0;
  // Asked while the position is still at the start of the read: the plan has moved the control stream on
  // already.
  player_.GetDspFactorsAtCurrentSampleIndex(&scale, &transposition);
  return {static_cast<double>(scale), transposition};
}

void RenderStep::Read_(long long count) {
  std::fill_n(frames_.data(), static_cast<std::size_t>(count) * channels_, 0.0F);
  SampleCount delivered(count, 1.0L);
  player_.ReadSamples(&delivered, frames_.data());
  // The audio ends before the song does: silence stands in, and the song runs on.
  const long long missing = count - delivered.GetUnscaled();
  if (missing > 0) player_.AddToSampleIndex(missing);
}

}  // namespace tesk_audio
