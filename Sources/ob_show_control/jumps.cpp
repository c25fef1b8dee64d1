#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/scope_lock.h"

void OBShowControl::SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead) {
  ShowControl::SetJump(tickIndex, lock, skipAhead);

  exc::ScopeLock ownLock(*this);
  lastJumpSampleIndex_ = sampleIndex_;
  sampleIndex_ = samplesTicksConverter_.TicksToSamples(tickIndex);
  const SampleCount correction = SampleCount{skipAheadSamplesOnNextJump_} + nextJumpSampleAdjustment_;
  const bool isCorrected = skipAheadSamplesOnNextJump_ > 0 || nextJumpSampleAdjustment_ != 0;
  if (skipAhead && isCorrected) {
    sampleIndex_ += correction;
    DoSkipAhead(samplesTicksConverter_.SamplesToTicksInteger(sampleIndex_));
  }
  // Good for one jump only, and thrown away by a jump that does not use it.
  skipAheadSamplesOnNextJump_ = 0;
  nextJumpSampleAdjustment_ = 0;
}

bool OBShowControl::GetJumpIsNext() {
  exc::ScopeLock lock(*this);
  if (loopEvents_.HasVampOrRepeat()) {
    const LoopEvent& loop = loopEvents_.GetFirstVampOrRepeat();
    if (loop.tick == tickIndex_ && (loop.limit == 0 || loop.done < loop.limit)) {
      jumpTargetSampleIndex_ = samplesTicksConverter_.TicksToSamples(loop.targetTick);
      return true;
    }
  }
  unsigned target = 0;
  if (!HasCutAtTickIndex(tickIndex_, &target)) return false;
  jumpTargetSampleIndex_ = samplesTicksConverter_.TicksToSamples(target);
  return true;
}

bool OBShowControl::GetCutToEndOfSongIsNext() {
  unsigned target = 0;
  return HasCutAtTickIndex(tickIndex_, &target) && target >= midiEndTickIndex_;
}

void OBShowControl::AdjustNextJumpSampleIndex(SampleCount samples) {
  exc::ScopeLock lock(*this);
  nextJumpSampleAdjustment_ = samples;
}

void OBShowControl::SkipAheadSamplesOnNextJump(unsigned samples) {
  exc::ScopeLock lock(*this);
  skipAheadSamplesOnNextJump_ = samples;
}

SampleCount OBShowControl::GetLastJumpSampleIndex() {
  exc::ScopeLock lock(*this);
  return lastJumpSampleIndex_;
}

SampleCount OBShowControl::GetJumpTargetSampleIndex() {
  exc::ScopeLock lock(*this);
  return jumpTargetSampleIndex_;
}
