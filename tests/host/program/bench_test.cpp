#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/host/run_orbel.h"

namespace host_tests {
namespace {

// What a busy machine measures is not asserted: that it measures, and against which bounds.
TEST(Bench, LiveMeasuresEveryPeriodThatIsAskedFor) {
  const Ended run =
      Orbel({"bench", "live", "--period", "64,1024", "--trials", "3", "--ahead", "20", "--json"});
  ASSERT_EQ(run.status, 0) << run.messages;
  const nlohmann::json rows = nlohmann::json::parse(run.out);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0]["period"], 64);
  EXPECT_EQ(rows[1]["period"], 1024);
  EXPECT_EQ(rows[0]["vamp"]["boundMs"], 22.3);
  EXPECT_EQ(rows[1]["vamp"]["boundMs"], 42.3);
  EXPECT_EQ(rows[1]["caesura"]["boundMs"], 46.3);
  for (const auto& row : rows) {
    EXPECT_EQ(row["vamp"]["trials"].get<int>() + row["disturbed"].get<int>(), 3);
    EXPECT_EQ(row["caesura"]["trials"], 3);
    EXPECT_GT(row["caesura"]["goToSoundLongestMs"], 0.0);
  }
}

}  // namespace
}  // namespace host_tests
