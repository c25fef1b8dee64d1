#include "Sources/ob_show_control/planning_checks.h"

#include <gtest/gtest.h>

#include "exc/assertion/ex_assertion_error.h"
#include "tests/ob_show_control/control_fixture.h"
#include "tests/support/throws_with_text.h"

namespace {

using namespace ob_show_control;
using test_support::Failed;
using test_support::ThrowsWithText;

const tesk_audio::SampleCount kRequest(100, 1.0L);

TEST(PlanningChecks, TheEndLiesWithinTheRequest) {
  EXPECT_NO_THROW(RequireEndWithinRequest(0, kRequest));
  EXPECT_NO_THROW(RequireEndWithinRequest(100, kRequest));
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>([] { RequireEndWithinRequest(-1, kRequest); },
                                                    Failed("neededSamples >= 0", 171)));
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [] { RequireEndWithinRequest(101, kRequest); },
      Failed("neededSamples <= requestedSampleCount.GetUnscaled()", 172)));
}

TEST(PlanningChecks, TheTickReachedLiesWithinTheRequest) {
  EXPECT_NO_THROW(RequireReachedWithinRequest(0, kRequest));
  EXPECT_NO_THROW(RequireReachedWithinRequest(100, kRequest));
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>([] { RequireReachedWithinRequest(-1, kRequest); },
                                                    Failed("samplesToLoad >= 0", 273)));
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [] { RequireReachedWithinRequest(101, kRequest); },
      Failed("samplesToLoad <= requestedSampleCount.GetUnscaled()", 274)));
}

TEST(PlanningChecks, AReadIsNotNegative) {
  EXPECT_NO_THROW(RequireReadNotNegative(0));
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>([] { RequireReadNotNegative(-1); },
                                                    Failed("samplesToLoad >= 0", 285)));
}

}  // namespace
