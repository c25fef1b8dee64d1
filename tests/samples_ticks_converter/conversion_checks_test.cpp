#include "Sources/samples_ticks_converter/conversion_checks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "exc/assertion/ex_assertion_error.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

using namespace samples_ticks_converter;

template <typename Check>
testing::AssertionResult FailsWith(Check check, const std::string& condition, int line) {
  return ThrowsWithText<exc::ExAssertionError>(
      check, "Assertion failed: " + condition +
                 ", function SamplesToTicksInteger, file Sources/samples_ticks_converter, line " +
                 std::to_string(line) + ".");
}

TEST(ConversionChecks, TheResultIsNotAfterTheSample) {
  EXPECT_NO_THROW(RequireResultNotAfterSample(22, 22));
  EXPECT_TRUE(
      FailsWith([] { RequireResultNotAfterSample(21, 22); }, "sampleCount >= sampleCountAtResultTicks", 335));
}

TEST(ConversionChecks, TheResultConvertsBackTo32Bits) {
  EXPECT_NO_THROW(RequireSameSampleBack(4'294'967'295, 4'294'967'295));
  EXPECT_TRUE(FailsWith([] { RequireSameSampleBack(0, 4'294'967'296); },
                        "checkSampleCount == sampleCountAtResultTicks", 352));
  EXPECT_TRUE(FailsWith([] { RequireSameSampleBack(4'294'967'295, -1); },
                        "checkSampleCount == sampleCountAtResultTicks", 352))
      << "the narrow count is widened without a sign";
}

TEST(ConversionChecks, TheCountsAddUpAndSaySoWhenTheyDoNot) {
  test_support::CoutCapture console;
  EXPECT_NO_THROW(RequireSampleCountsAddUp(30, 22, 8));
  EXPECT_EQ(console.Text(), "");
  EXPECT_TRUE(FailsWith([] { RequireSampleCountsAddUp(31, 22, 8); },
                        "sampleCount == checkSampleCount + extraSamplesBeyondResultTicks", 364));
  EXPECT_EQ(console.Text(), "sampleCount = 31 checkSampleCount = 22 extraSamplesBeyondResultTicks = 8\n");
}

TEST(ConversionChecks, TheCountsAddUpIn64Bits) {
  test_support::CoutCapture console;
  EXPECT_NO_THROW(RequireSampleCountsAddUp(8'589'934'590, 4'294'967'295, 4'294'967'295));
  EXPECT_EQ(console.Text(), "");
}

TEST(ConversionChecks, TheRemainderIsLessThanATick) {
  const std::string condition = "static_cast<double>(extraSamplesBeyondResultTicks) < samplesPerTick";
  EXPECT_NO_THROW(RequireRemainderWithinTick(22, 22.05));
  EXPECT_TRUE(FailsWith([] { RequireRemainderWithinTick(23, 22.05); }, condition, 367));
  EXPECT_TRUE(FailsWith([] { RequireRemainderWithinTick(24, 24.0); }, condition, 367))
      << "a whole tick is too much";
  EXPECT_TRUE(FailsWith([] { RequireRemainderWithinTick(0, std::nan("")); }, condition, 367));
}

TEST(ConversionChecks, TheNextTickIsAfterTheSample) {
  const std::string condition = "sampleCountAtResultPlusOne > sampleCount";
  EXPECT_NO_THROW(RequireNextTickAfterSample(44, 43));
  EXPECT_TRUE(FailsWith([] { RequireNextTickAfterSample(44, 44); }, condition, 372));
  EXPECT_NO_THROW(RequireNextTickAfterSample(0, -1)) << "compared with a sign";
}

}  // namespace
