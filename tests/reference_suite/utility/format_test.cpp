#include "suite/utility/format.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <stdexcept>
#include <string>

#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

TEST(Format, TakesPrintfConversions) {
  EXPECT_EQ(exc::format("%s: %d %s", "what", 22, "text"), "what: 22 text");
  EXPECT_EQ(exc::format("file_loader%s", "12"), "file_loader12");
  EXPECT_EQ(exc::format("%5.2f|%-4u|%04x|%lld|%c|%%", 3.14159, 7u, 255u, -9223372036854775807LL, 'c'),
            " 3.14|7   |00ff|-9223372036854775807|c|%");
}

TEST(Format, OfAnEmptyTextIsEmpty) {
  EXPECT_EQ(exc::format("%s", ""), "");
}

TEST(Format, HasNoLimitOfLength) {
  const std::string text(100000, 'x');
  EXPECT_EQ(exc::format("[%s]", text.c_str()), "[" + text + "]");
}

TEST(Format, WhatCannotBeFormattedIsAnError) {
  const auto notACharacter = static_cast<std::wint_t>(0x7fffffff);
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>([&] { exc::format("%lc", notACharacter); },
                                                 "Unable to format \"%lc\"."));
}
