#include "Sources/ob_show_control/limit_scaled.h"
#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/ob_show_control/planning_checks.h"
#include "Sources/ob_show_control/source_path.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/assertion/require_at.h"
#include "exc/lock/scope_unlock.h"

// The part of the planning in which the position moves: a read that crosses at least one tick.

using ob_show_control::kPlanningFunction;
using ob_show_control::kSourcePath;

tesk_audio::SampleCount OBShowControl::PlanAcrossTicks_(tesk_audio::SampleCount requestedSampleCount,
                                                        TickIndex requestedEndTickIndex,
                                                        unsigned samplesPastTick, exc::ExLock& lock) {
  EXC_REQUIRE_AT(requestedEndTickIndex > this->tickIndex_, kPlanningFunction, kSourcePath,
                 ob_show_control::kEndTickIsAhead);
  EXC_REQUIRE_AT(requestedSampleCount.GetUnscaled() != 0, kPlanningFunction, kSourcePath,
                 ob_show_control::kRequestIsStillNotZero);
  // The current tick is heard from its first sample on, which may lie a little before this read.
  samplesTicksConverter_.RegisterElapsedSampleCount(sampleCount_ - samplesPastTick, tickIndex_);

  ProcessLoopEventsUnlocked_();
  CutToFirstLoopEvent_(&requestedEndTickIndex, &requestedSampleCount);
  FindNextControlEventUnlocked_(tickIndex_, requestedEndTickIndex);

  if (caesuraStop_) {
    EXC_REQUIRE_AT(this->HasPendingCaesura(), kPlanningFunction, kSourcePath,
                   ob_show_control::kCaesuraIsPending);
    return PlanStop_(requestedSampleCount);
  }
  if (jumpPending_) return PlanJump_(requestedSampleCount, lock);
  if (replan_) return PlanRead_(requestedSampleCount, lock);
  return PlanAdvance_(requestedSampleCount, requestedEndTickIndex);
}

void OBShowControl::ProcessLoopEventsUnlocked_() {
  // Lock open: the base calls out to listeners; a performer's command may change loops and caesuras here.
  // Afterwards: the list of loop events is looked at anew.
  exc::ScopeUnlock unlocked(*this);
  exc::ScopeUnlock converterUnlocked(samplesTicksConverter_);
  ProcessLoopEventsAtCurrentTickIndex();
}

void OBShowControl::FindNextControlEventUnlocked_(TickIndex from, TickIndex to) {
  // Lock open: as above; what the base finds, it leaves in the flags and the reached tick.
  // Afterwards: flags, reached tick and position are read anew.
  exc::ScopeUnlock unlocked(*this);
  exc::ScopeUnlock converterUnlocked(samplesTicksConverter_);
  FindNextControlEventOnAdvance(from, to);
}

void OBShowControl::CutToFirstLoopEvent_(TickIndex* requestedEndTickIndex,
                                         tesk_audio::SampleCount* requestedSampleCount) {
  if (loopEvents_.GetSize() == 0) return;
  const TickIndex loopTick = loopEvents_.GetFirstLoopEvent().tick;
  if (*requestedEndTickIndex <= loopTick) return;
  *requestedEndTickIndex = loopTick;
  const SampleCount requestedEndSampleIndex = samplesTicksConverter_.TicksToSamples(loopTick);
  EXC_REQUIRE_AT(requestedEndSampleIndex > this->sampleIndex_, kPlanningFunction, kSourcePath,
                 ob_show_control::kLoopEventIsAhead);
  SetUnscaledAndLimitScaled(requestedEndSampleIndex - sampleIndex_, requestedSampleCount);
}

// A count of 0 tells the player to stop here.
tesk_audio::SampleCount OBShowControl::PlanStop_(tesk_audio::SampleCount requestedSampleCount) {
  requestedSampleCount.SetUnscaled(0);
  return SetExpectedNextAddToSampleIndex_(requestedSampleCount);
}

// Takes the jump and plans the read from its target.
tesk_audio::SampleCount OBShowControl::PlanJump_(tesk_audio::SampleCount requestedSampleCount,
                                                 exc::ExLock& lock) {
  const TickIndex jumpTick = reachedTickIndex_;
  FindNextControlEventOnSeek(jumpTick, false);
  SetJump(jumpTick, lock, true);
  if (HasPendingCaesura()) return PlanStop_(requestedSampleCount);
  if (jumpTick < midiEndTickIndex_) return PlanRead_(requestedSampleCount, lock);
  return PlanStop_(requestedSampleCount);
}

// Moves the control position to where the read ends.
tesk_audio::SampleCount OBShowControl::PlanAdvance_(tesk_audio::SampleCount requestedSampleCount,
                                                    TickIndex requestedEndTickIndex) {
  const SampleCount startSampleIndex = sampleIndex_;
  SetTickIndex(ClipTickIndexToNextDspEvent(reachedTickIndex_));
  EXC_REQUIRE_AT(this->tickIndex_ <= this->audioEndTickIndex_, kPlanningFunction, kSourcePath,
                 ob_show_control::kTickIsWithinSong);
  HowToPlayAdvanceToTickIndex(tickIndex_);

  SampleCount samplesToLoad = requestedSampleCount.GetUnscaled();
  if (tickIndex_ != requestedEndTickIndex) {
    EXC_REQUIRE_AT(this->tickIndex_ < requestedEndTickIndex, kPlanningFunction, kSourcePath,
                   ob_show_control::kTickIsBeforeRequestedEnd);
    samplesToLoad = samplesTicksConverter_.TicksToSamples(tickIndex_) - startSampleIndex;
    ob_show_control::RequireReachedWithinRequest(samplesToLoad, requestedSampleCount);
  }

  // The read ends inside the tick that is now current. The blank after the bracket is part of the text.
  // clang-format off
  EXC_REQUIRE_AT(this->tickIndex_ == this->samplesTicksConverter_.SamplesToTicksInteger( this->sampleIndex_ + samplesToLoad),
                 kPlanningFunction, kSourcePath, ob_show_control::kReadEndsInsideTick);
  // clang-format on
  ob_show_control::RequireReadNotNegative(samplesToLoad);
  SetUnscaledAndLimitScaled(samplesToLoad, &requestedSampleCount);
  return SetExpectedNextAddToSampleIndex_(requestedSampleCount);
}
