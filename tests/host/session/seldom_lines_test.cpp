#include "host/session/seldom_lines.h"

#include <gtest/gtest.h>

namespace orbel::host {
namespace {

TEST(SeldomLines, WhatIsSaidEverySecondPassesOnceAMinute) {
  SeldomLines lines;
  int passed = 0;
  for (int second = 0; second < 120; ++second) passed += lines.IsNew("no server", second) ? 1 : 0;
  EXPECT_EQ(passed, 2);
}

TEST(SeldomLines, AnotherLineIsAnotherMatter) {
  SeldomLines lines;
  EXPECT_TRUE(lines.IsNew("one", 0.0));
  EXPECT_TRUE(lines.IsNew("two", 0.0));
  EXPECT_FALSE(lines.IsNew("one", 59.0));
  EXPECT_TRUE(lines.IsNew("one", 60.0));
}

}  // namespace
}  // namespace orbel::host
