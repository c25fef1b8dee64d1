#include "exc/text/split_string.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "exc/text/join_string.h"
#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

using Parts = std::vector<std::string>;

TEST(GetTokenSize, IsTheWidthOfTheSeparator) {
  EXPECT_EQ(exc::GetTokenSize_(' '), 1u);
  EXPECT_EQ(exc::GetTokenSize_('\0'), 1u);
  EXPECT_EQ(exc::GetTokenSize_(std::string("")), 0u);
  EXPECT_EQ(exc::GetTokenSize_(std::string(", ")), 2u);
}

TEST(SplitString, GivesThePartsBetweenSeparators) {
  EXPECT_EQ(exc::SplitString<char>("1 Opening Night.obd", ' ', -1), (Parts{"1", "Opening", "Night.obd"}));
  EXPECT_EQ(exc::SplitString<char>("7.obd", ' ', -1), Parts{"7.obd"});
}

TEST(SplitString, KeepsEmptyParts) {
  EXPECT_EQ(exc::SplitString<char>(" a  b ", ' ', -1), (Parts{"", "a", "", "b", ""}));
  EXPECT_EQ(exc::SplitString<char>(" ", ' ', -1), (Parts{"", ""}));
}

TEST(SplitString, AnEmptyTextIsOneEmptyPart) {
  EXPECT_EQ(exc::SplitString<char>("", ' ', -1), Parts{""});
}

TEST(SplitString, CountLimitsTheSplits) {
  EXPECT_EQ(exc::SplitString<char>("a b c", ' ', 0), Parts{"a b c"});
  EXPECT_EQ(exc::SplitString<char>("a b c", ' ', 1), (Parts{"a", "b c"}));
  EXPECT_EQ(exc::SplitString<char>("a b c", ' ', 2), (Parts{"a", "b", "c"}));
  EXPECT_EQ(exc::SplitString<char>("a b c", ' ', 100), (Parts{"a", "b", "c"}));
  EXPECT_EQ(exc::SplitString<char>("a b c", ' ', -100), (Parts{"a", "b", "c"}));
}

TEST(SplitString, HasNoLimitUnlessOneIsGiven) {
  EXPECT_EQ(exc::SplitString("a b c", ' ').size(), 3u);
}

TEST(SplitString, TakesLongerSeparators) {
  EXPECT_EQ(exc::SplitString<std::string>("a, b,c, ", ", ", -1), (Parts{"a", "b,c", ""}));
  EXPECT_EQ(exc::SplitString<std::string>("aaa", "aa", -1), (Parts{"", "a"}));
}

TEST(SplitString, RefusesAnEmptySeparator) {
  EXPECT_TRUE(ThrowsWithText<std::invalid_argument>([] { exc::SplitString<std::string>("a", "", -1); },
                                                    "token must have non-zero length."));
}

TEST(SplitString, JoinedAgainThePartsAreTheText) {
  std::mt19937 random(61);
  const std::string alphabet = "  ab";
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (auto length = random() % 12; length > 0; --length) text += alphabet[random() % alphabet.size()];
    const int limit = static_cast<int>(random() % 6) - 1;
    const Parts parts = exc::SplitString<char>(text, ' ', limit);
    ASSERT_EQ(exc::JoinString(parts.begin(), parts.end(), " "), text) << "limit " << limit;
  }
}
