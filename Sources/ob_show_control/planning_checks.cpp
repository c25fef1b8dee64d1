#include "Sources/ob_show_control/planning_checks.h"

#include "Sources/ob_show_control/source_path.h"
#include "exc/assertion/require_at.h"

namespace ob_show_control {

void RequireEndWithinRequest(SampleCount neededSamples, const tesk_audio::SampleCount& requestedSampleCount) {
  EXC_REQUIRE_AT(neededSamples >= 0, kPlanningFunction, kSourcePath, kEndIsNotBehind);
  EXC_REQUIRE_AT(neededSamples <= requestedSampleCount.GetUnscaled(), kPlanningFunction, kSourcePath,
                 kEndIsWithinRequest);
}

void RequireReachedWithinRequest(SampleCount samplesToLoad,
                                 const tesk_audio::SampleCount& requestedSampleCount) {
  EXC_REQUIRE_AT(samplesToLoad >= 0, kPlanningFunction, kSourcePath, kReachedSampleIsNotBehind);
  EXC_REQUIRE_AT(samplesToLoad <= requestedSampleCount.GetUnscaled(), kPlanningFunction, kSourcePath,
                 kReachedSampleIsWithinRequest);
}

void RequireReadNotNegative(SampleCount samplesToLoad) {
  EXC_REQUIRE_AT(samplesToLoad >= 0, kPlanningFunction, kSourcePath, kReadIsNotNegative);
}

}  // namespace ob_show_control
