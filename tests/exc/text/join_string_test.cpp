#include "exc/text/join_string.h"

#include <gtest/gtest.h>

#include <list>
#include <string>
#include <vector>

#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

TEST(JoinString, PutsTheSeparatorBetweenTheStrings) {
  const std::vector<std::string> words{"1", "Opening", "Night"};
  EXPECT_EQ(exc::JoinString(words.begin(), words.end(), " "), "1 Opening Night");
  EXPECT_EQ(exc::JoinString(words.begin() + 1, words.end(), "/"), "Opening/Night");
}

TEST(JoinString, AnEmptyRangeIsAnEmptyString) {
  const std::vector<std::string> words{"7.obd"};
  EXPECT_EQ(exc::JoinString(words.begin() + 1, words.end(), " "), "");
}

TEST(JoinString, EmptyStringsKeepTheirSeparators) {
  const std::list<std::string> words{"", "a", "", ""};
  EXPECT_EQ(exc::JoinString(words.begin(), words.end(), " "), " a  ");
}

TEST(JoinString, RefusesAnEmptySeparator) {
  const std::vector<std::string> words{"a", "b"};
  const char empty[2] = {'\0', '\0'};
  EXPECT_TRUE(ThrowsWithText<std::invalid_argument>(
      [&] { exc::JoinString(words.begin(), words.end(), empty); }, "token must have non-zero length."));
  EXPECT_TRUE(ThrowsWithText<std::invalid_argument>([&] { exc::JoinString(words.end(), words.end(), empty); },
                                                    "token must have non-zero length."));
}
