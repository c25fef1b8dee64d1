#pragma once

#include "Sources/types.h"
#include "suite/audio/sample_count.h"

// What the planning of a read checks of its own sums, on plain values, so that each check can be seen to
// fail, also those that no song can provoke. They throw exc::ExAssertionError and change nothing.
namespace ob_show_control {

inline constexpr char kPlanningFunction[] = "GetNextReadSampleCount";

// The lines in the texts of the planning's assertions: data, not places in a file, in the order of the
// checks.
enum PlanningLine : int {
  kRequestIsNotZero = 108,
  kControlStreamIsInStep = 121,
  kCatchUpIsAhead = 135,
  kEndIsNotBehind = 171,
  kEndIsWithinRequest = 172,
  kEndTickIsAhead = 186,
  kRequestIsStillNotZero = 187,
  kLoopEventIsAhead = 207,
  kCaesuraIsPending = 226,
  kTickIsWithinSong = 262,
  kTickIsBeforeRequestedEnd = 270,
  kReachedSampleIsNotBehind = 273,
  kReachedSampleIsWithinRequest = 274,
  kReadEndsInsideTick = 283,
  kReadIsNotNegative = 285,
};

// The samples up to the end of the song.
void RequireEndWithinRequest(SampleCount neededSamples, const tesk_audio::SampleCount& requestedSampleCount);

// The samples up to the tick at which the advance stopped.
void RequireReachedWithinRequest(SampleCount samplesToLoad,
                                 const tesk_audio::SampleCount& requestedSampleCount);

// The samples of the read, whatever decided on them.
void RequireReadNotNegative(SampleCount samplesToLoad);

}  // namespace ob_show_control
