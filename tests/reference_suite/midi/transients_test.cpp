#include "suite/midi/transients.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "tests/support/throws_with_text.h"

namespace {

TEST(Transients, StartAsWritten) {
  Transients transients;
  EXPECT_EQ(transients.GetTempoScale(), 1.0);
  EXPECT_EQ(transients.GetTransposition(), 0);
}

TEST(Transients, KeepWhatIsSet) {
  Transients transients;
  transients.SetTempoScale(0.8);
  transients.SetTransposition(-3);
  EXPECT_EQ(transients.GetTempoScale(), 0.8);
  EXPECT_EQ(transients.GetTransposition(), -3);
}

TEST(Transients, RefuseScalesThatNothingCanBePlayedAt) {
  Transients transients;
  transients.SetTempoScale(0.5);
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double scale :
       {0.0, -0.0, -1.0, infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_TRUE(test_support::ThrowsWithText<std::invalid_argument>(
        [&] { transients.SetTempoScale(scale); }, "A tempo scale must be a finite number greater than 0."))
        << scale;
  }
  EXPECT_EQ(transients.GetTempoScale(), 0.5);
  transients.SetTempoScale(std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(transients.GetTempoScale(), std::numeric_limits<double>::denorm_min());
}

}  // namespace
