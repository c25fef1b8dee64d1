#include "Sources/samples_ticks_converter/sample_math.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace samples_ticks_converter;

TEST(SampleMath, HalvesAreRoundedAwayFromZero) {
  EXPECT_EQ(RoundedSamples(0.5, 1.0L), 1);
  EXPECT_EQ(RoundedSamples(1.5, 1.0L), 2);
  EXPECT_EQ(RoundedSamples(2.5, 1.0L), 3);
  EXPECT_EQ(RoundedSamples(-0.5, 1.0L), -1);
  EXPECT_EQ(RoundedSamples(0.49999999999999994, 1.0L), 0);
}

// A third as a double is a little less than a third, and so is the product with 4.5 in long double.
TEST(SampleMath, TheProductIsLongDouble) {
  const double third = 1.0 / 3.0;
  const long double product = static_cast<long double>(third) * 4.5L;
  ASSERT_LT(product, 1.5L);
  ASSERT_EQ(third * 4.5, 1.5) << "in double the product would be the half";
  EXPECT_EQ(RoundedSamples(third, 4.5L), 1);
}

TEST(SampleMath, RoundingIsRoundlToTheBit) {
  const auto expectRoundl = [](long double value) {
    ASSERT_EQ(RoundedToInteger(value), ToInteger(::roundl(value))) << value;
  };
  std::mt19937_64 random(1);
  for (int i = 0; i < 200'000; ++i) {
    const auto bits = static_cast<long double>(random());
    const int exponent = static_cast<int>(random() % 140) - 134;
    const long double value = std::ldexp(bits, exponent);
    expectRoundl(value);
    expectRoundl(-value);
  }
  const long double infinity = std::numeric_limits<long double>::infinity();
  for (const long double value : {0.0L, 0.5L, 1.5L, 4611686018427387903.5L, 4611686018427387904.0L,
                                  9223372036854775807.0L, 9223372036854775808.0L, infinity}) {
    for (const long double near :
         {std::nextafter(value, -infinity), value, std::nextafter(value, infinity)}) {
      expectRoundl(near);
      expectRoundl(-near);
    }
  }
  EXPECT_EQ(RoundedToInteger(std::numeric_limits<long double>::quiet_NaN()), 0);
}

TEST(SampleMath, SamplesPerTickAreRoundedToDoubleOnce) {
  EXPECT_EQ(SamplesPerTick(0.005, 44100.1L), static_cast<double>(0.005 * 44100.1L));
  EXPECT_NE(SamplesPerTick(0.005, 44100.1L), 0.005 * static_cast<double>(44100.1L)) << "not a double rate";
}

TEST(SampleMath, WhatIsNoInteger64Is0) {
  EXPECT_EQ(ToInteger(9223372036854775807.0L), LLONG_MAX);
  EXPECT_EQ(ToInteger(9223372036854775808.0L), 0);
  EXPECT_EQ(ToInteger(-9223372036854775808.0L), LLONG_MIN);
  EXPECT_EQ(ToInteger(-9223372036854775809.0L), 0);
  EXPECT_EQ(ToInteger(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(ToInteger(std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(ToInteger(-std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(ToInteger(std::numeric_limits<long double>::quiet_NaN()), 0);
  EXPECT_EQ(ToInteger(-std::numeric_limits<long double>::infinity()), 0);
}

TEST(SampleMath, TicksAreTruncatedAndTakenAs32Bits) {
  EXPECT_EQ(ToTicks(2.9), 2u);
  EXPECT_EQ(ToTicks(4294967295.0), 4294967295u);
  EXPECT_EQ(ToTicks(4294967297.0), 1u);
  EXPECT_EQ(ToTicks(-1.0), 4294967295u);
}

TEST(SampleMath, SumsWrap) {
  EXPECT_EQ(AddSamples(2, -3), -1);
  EXPECT_EQ(AddSamples(LLONG_MAX, 1), LLONG_MIN);
}

}  // namespace
