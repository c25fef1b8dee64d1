#include "exc/assertion/require_at.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <type_traits>

#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

TEST(RequireAt, TextHasConditionFunctionPathAndLine) {
  const double roundingErrorTicks = 1.5;
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] {
        EXC_REQUIRE_AT(fabs(roundingErrorTicks) < 1.0, "SamplesToTicksRounded",
                       "Sources/samples_ticks_converter", 228);
      },
      "Assertion failed: fabs(roundingErrorTicks) < 1.0, function SamplesToTicksRounded, file "
      "Sources/samples_ticks_converter, line 228."));
}

TEST(RequireAt, PassesWhenTheConditionHolds) {
  int evaluations = 0;
  EXPECT_NO_THROW(EXC_REQUIRE_AT(++evaluations == 1, "Function", "path", 1));
  EXPECT_EQ(evaluations, 1);
}

TEST(RequireAt, NanFailsAComparison) {
  const double roundingErrorTicks = std::nan("");
  EXPECT_THROW(EXC_REQUIRE_AT(fabs(roundingErrorTicks) < 1.0, "Function", "path", 1), exc::ExAssertionError);
}

TEST(RequireAt, IsOneStatement) {
  const auto check = [](bool branch, bool condition) {
    if (branch)
      EXC_REQUIRE_AT(condition, "Function", "path", 1);
    else
      EXC_REQUIRE_AT(!condition, "Function", "path", 2);
  };
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { check(true, false); }, "Assertion failed: condition, function Function, file path, line 1."));
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { check(false, true); }, "Assertion failed: !condition, function Function, file path, line 2."));
}

TEST(FailAssertion, FormatsItsArgumentsAsTheyAre) {
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [] {
        exc::FailAssertion("this->GetPlayerState() == PlayerState::STOP", "Shutdown", "Sources/audio_player",
                           7);
      },
      "Assertion failed: this->GetPlayerState() == PlayerState::STOP, function Shutdown, file "
      "Sources/audio_player, line 7."));
  EXPECT_TRUE(
      ThrowsWithText<exc::ExAssertionError>([] { exc::FailAssertion("a % b == 0", "%s", "%d", -1); },
                                            "Assertion failed: a % b == 0, function %s, file %d, line -1."));
}

TEST(ExAssertionError, IsALogicError) {
  EXPECT_TRUE((std::is_base_of_v<std::logic_error, exc::ExAssertionError>));
}
