#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/scope_lock.h"

void OBShowControl::AddToSampleIndex(SampleCount samples) {
  exc::ScopeLock lock(*this);
  sampleIndex_ += samples;
  sampleCount_ += samples;
  if (samples <= expectedNextAddToSampleIndex_) return;

  // More was consumed than was planned: the control position follows the audio.
  const TickIndex sampleTick = samplesTicksConverter_.SamplesToTicksInteger(sampleIndex_);
  if (sampleTick > tickIndex_) {
    DoSkipAhead(sampleTick);
    // Asked by contract, for nothing: the position may have gone past the end, and the next plan sees to
    // that.
    static_cast<void>(GetEndTickIndex());
  }
}

void OBShowControl::GetAlignedTickAndSampleIndex(SampleCount* sampleIndex, TickIndex* tickIndex) {
  exc::ScopeLock converterLock(samplesTicksConverter_);
  int samplesToTick = 0;
  TickIndex tick = samplesTicksConverter_.SamplesToTicksRounded(*sampleIndex, &samplesToTick);
  if (samplesToTick < 0) ++tick;
  *tickIndex = tick;
  *sampleIndex = samplesTicksConverter_.TicksToSamples(tick);
}

SampleCount OBShowControl::GetSampleIndex() {
  exc::ScopeLock lock(*this);
  return sampleIndex_;
}

SampleCount OBShowControl::GetSampleCount() {
  exc::ScopeLock lock(*this);
  return sampleCount_;
}

void OBShowControl::ResetGuiUpdate() {
  ShowControl::ResetGuiUpdate();
  exc::ScopeLock lock(*this);
  sampleCount_ = 0;
}

void OBShowControl::ResetControlVariables() {
  {
    exc::ScopeLock lock(*this);
    sampleIndex_ = 0;
    lastJumpSampleIndex_ = 0;
    jumpTargetSampleIndex_ = 0;
    sampleCount_ = 0;
    nextJumpSampleAdjustment_ = 0;
    expectedNextAddToSampleIndex_ = 0;
    skipAheadSamplesOnNextJump_ = 0;
  }
  ShowControl::ResetControlVariables();
}
