#include <algorithm>

#include "Sources/ob_show_control/limit_scaled.h"
#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/ob_show_control/planning_checks.h"
#include "Sources/ob_show_control/source_path.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/assertion/require_at.h"
#include "exc/console/cout_buffer.h"
#include "exc/lock/scope_lock.h"

// How long the next read may be. A request is only ever shortened, in this order: to the end of the song, to
// the first loop event, to the control event that the advance finds, to the next change of DSP factors.

using ob_show_control::kPlanningFunction;
using ob_show_control::kSourcePath;

tesk_audio::SampleCount OBShowControl::GetNextReadSampleCount(tesk_audio::SampleCount requestedSampleCount) {
  exc::ScopeLock converterLock(samplesTicksConverter_);
  exc::ScopeLock lock(*this);
  return PlanRead_(requestedSampleCount, lock);
}

tesk_audio::SampleCount OBShowControl::PlanRead_(tesk_audio::SampleCount requestedSampleCount,
                                                 exc::ExLock& lock) {
  EXC_REQUIRE_AT(requestedSampleCount.GetUnscaled() != 0, kPlanningFunction, kSourcePath,
                 ob_show_control::kRequestIsNotZero);
  unsigned samplesPastTick = 0;
  const TickIndex sampleTick = samplesTicksConverter_.SamplesToTicksInteger(sampleIndex_, &samplesPastTick);
  RequireControlStreamInStep_();

  if (sampleTick < tickIndex_) return CatchUp_(requestedSampleCount);
  if (sampleTick > tickIndex_) {
    sampleIndex_ = samplesTicksConverter_.TicksToSamples(tickIndex_);
    samplesPastTick = 0;
    exc::CoutBuffer() << "WARNING: sample index reset to align with MIDI ticks." << exc::EndlT();
  }

  TickIndex requestedEndTickIndex =
      samplesTicksConverter_.SamplesToTicksInteger(sampleIndex_ + requestedSampleCount.GetUnscaled());
  if (requestedEndTickIndex >= GetEndTickIndex()) {
    requestedEndTickIndex = GetEndTickIndex();
    CutToEndOfSong_(requestedEndTickIndex, &requestedSampleCount);
  }
  // A read that stays inside the current tick meets nothing.
  if (requestedEndTickIndex == tickIndex_) return SetExpectedNextAddToSampleIndex_(requestedSampleCount);
  return PlanAcrossTicks_(requestedSampleCount, requestedEndTickIndex, samplesPastTick, lock);
}

void OBShowControl::RequireControlStreamInStep_() {
  // Past the end of the MIDI the control stream stays where it is.
  if (tickIndex_ > midiEndTickIndex_) return;
  const TickIndex controlStreamTickIndex = howToPlay_.GetTickIndex();
  EXC_REQUIRE_AT(this->tickIndex_ == controlStreamTickIndex, kPlanningFunction, kSourcePath,
                 ob_show_control::kControlStreamIsInStep);
}

tesk_audio::SampleCount OBShowControl::CatchUp_(tesk_audio::SampleCount requestedSampleCount) {
  const SampleCount desiredSampleIndex = samplesTicksConverter_.TicksToSamples(tickIndex_);
  EXC_REQUIRE_AT(desiredSampleIndex > this->sampleIndex_, kPlanningFunction, kSourcePath,
                 ob_show_control::kCatchUpIsAhead);
  // 32 bits by contract: the difference is taken modulo 2^32, and widened without a sign.
  const auto neededSamples = static_cast<unsigned>(desiredSampleIndex - sampleIndex_);
  if (requestedSampleCount.GetUnscaled() >= SampleCount{neededSamples}) {
    SetUnscaledAndLimitScaled(neededSamples, &requestedSampleCount);
  }
  return SetExpectedNextAddToSampleIndex_(requestedSampleCount);
}

void OBShowControl::CutToEndOfSong_(TickIndex endTickIndex, tesk_audio::SampleCount* requestedSampleCount) {
  const SampleCount endSampleIndex = samplesTicksConverter_.TicksToSamples(endTickIndex);
  if (sampleIndex_ > endSampleIndex) {
    exc::CoutBuffer() << "NOTICE: this->sampleIndex_ = " << sampleIndex_
                      << " is greater than the end of the song = " << endSampleIndex << exc::EndlT();
  }
  sampleIndex_ = std::min(sampleIndex_, endSampleIndex);
  const SampleCount neededSamples = endSampleIndex - sampleIndex_;
  ob_show_control::RequireEndWithinRequest(neededSamples, *requestedSampleCount);
  if (neededSamples < requestedSampleCount->GetUnscaled()) {
    SetUnscaledAndLimitScaled(neededSamples, requestedSampleCount);
  }
}

tesk_audio::SampleCount OBShowControl::SetExpectedNextAddToSampleIndex_(
    const tesk_audio::SampleCount& count) {
  expectedNextAddToSampleIndex_ = count.GetUnscaled();
  return count;
}
