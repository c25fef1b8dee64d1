#include "Sources/ob_show_control/errors.h"
#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/scope_lock.h"

namespace {

// How far the advancing recovery steps over the place of the fault; whatever the tempo or the PPQ.
constexpr unsigned kTicksToStepOver = 20;

}  // namespace

void OBShowControl::ResetForRecovery(SampleCount sampleIndex, SampleCount sampleCount) {
  RecoverAt_(sampleIndex, sampleCount, 0);
}

void OBShowControl::ResetForRecoveryAdvance(SampleCount sampleIndex, SampleCount sampleCount) {
  RecoverAt_(sampleIndex, sampleCount, kTicksToStepOver);
}

void OBShowControl::RecoverAt_(SampleCount sampleIndex, SampleCount sampleCount, unsigned ticksAhead) {
  ResetControlVariables();
  TickIndex tick = 0;
  GetAlignedTickAndSampleIndex(&sampleIndex, &tick);
  tick = RecoverySeek(tick + ticksAhead);
  if (tick >= GetEndTickIndex()) throw RecoveryReachedEndOfSong("Recovery reached end of song");

  // The other order than in planning; the read-samples lock keeps the two apart.
  exc::ScopeLock lock(*this);
  exc::ScopeLock converterLock(samplesTicksConverter_);
  sampleIndex_ = samplesTicksConverter_.TicksToSamples(tick);
  sampleCount_ = sampleCount;
}
