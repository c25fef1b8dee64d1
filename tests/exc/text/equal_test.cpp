#include "exc/text/equal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

TEST(Equal, IsExact) {
  EXPECT_TRUE(exc::equal(1.0L, static_cast<long double>(1.0)));
  EXPECT_FALSE(exc::equal(1.0L, std::nextafter(1.0L, 2.0L)));
  EXPECT_FALSE(exc::equal(0.1L, static_cast<long double>(0.1)))
      << "a double is not rounded like a long double";
}

TEST(Equal, HasTheCornersOfIeeeArithmetic) {
  const long double nan = std::numeric_limits<long double>::quiet_NaN();
  const long double infinity = std::numeric_limits<long double>::infinity();
  EXPECT_FALSE(exc::equal(nan, nan));
  EXPECT_TRUE(exc::equal(0.0L, -0.0L));
  EXPECT_TRUE(exc::equal(infinity, infinity));
  EXPECT_FALSE(exc::equal(infinity, -infinity));
}
