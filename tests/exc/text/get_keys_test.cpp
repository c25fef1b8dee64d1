#include "exc/text/get_keys.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "suite/utility/numeric_string_compare.h"

TEST(GetKeys, GivesTheKeysInTheMapsOrder) {
  const std::map<std::string, int, exc::NumericStringCompare> map{{"10", 0}, {"2", 0}, {"1", 0}};
  EXPECT_EQ(exc::get_keys(map), (std::vector<std::string>{"1", "2", "10"}));
}

TEST(GetKeys, OfAnEmptyMapAreNone) {
  EXPECT_TRUE(exc::get_keys(std::map<int, int>()).empty());
}

TEST(GetKeys, StayWhenTheMapChanges) {
  std::map<int, int> map{{1, 0}, {2, 0}, {3, 0}};
  for (const int key : exc::get_keys(map)) map.erase(key);
  EXPECT_TRUE(map.empty());
}
