#include "suite/utility/numeric_string_compare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

const exc::NumericStringCompare kLess;

// The strings in ascending order, each with the reason why it is greater than the one before.
struct Step {
  const char* text;
  const char* why;
};
const std::vector<Step> kAscending{
    {"", "nothing comes first"},
    {" 9", "a blank precedes the digits"},
    {".obd", "so does a dot"},
    {"0", ""},
    {"00a", "no number is greater than none: 0 and then a letter"},
    {"0a", "the same value; in byte order '0' precedes 'a'"},
    {"01", "1 is greater than 0"},
    {"1", "the same value as 01; byte order decides"},
    {"1 Opening", "longer"},
    {"1.2", "a dot follows a blank"},
    {"1.10", "10 is greater than 2"},
    {"1a", "a letter follows a dot"},
    {"02", "2 is greater than 1"},
    {"2", "the same value as 02"},
    {"2a", "longer, and still before 10"},
    {"10", "10 is greater than 2"},
    {"18446744073709551616", "longer than any machine number"},
    {"18446744073709551617", "and one more"},
    {"99999999999999999999999999", "more digits"},
    {"A2", "letters follow digits"},
    {"A10", "numbers count anywhere in the text"},
    {"A10b3", "longer"},
    {"A10b21", "21 is greater than 3"},
    {"a", "bytes, not letters: lower case follows upper case"},
    {"\xC3\xA4", "bytes beyond ASCII come last"},
};

}  // namespace

TEST(NumericStringCompare, RunsOfDigitsCompareByValue) {
  EXPECT_TRUE(kLess("2", "10"));
  EXPECT_FALSE(kLess("10", "2"));
  EXPECT_TRUE(kLess("2", "2a"));
  EXPECT_TRUE(kLess("2a", "10"));
}

TEST(NumericStringCompare, EveryTextIsLessThanAllThatFollowIt) {
  for (std::size_t i = 0; i < kAscending.size(); ++i) {
    EXPECT_FALSE(kLess(kAscending[i].text, kAscending[i].text));
    for (std::size_t j = i + 1; j < kAscending.size(); ++j) {
      EXPECT_TRUE(kLess(kAscending[i].text, kAscending[j].text))
          << kAscending[i].text << " < " << kAscending[j].text << ": " << kAscending[j].why;
      EXPECT_FALSE(kLess(kAscending[j].text, kAscending[i].text)) << kAscending[j].text;
    }
  }
}

TEST(NumericStringCompare, LeadingZerosMakeAnotherKeyNextToTheNumber) {
  const std::set<std::string, exc::NumericStringCompare> numbers{"2", "1", "01", "001", "0"};
  EXPECT_EQ(std::vector<std::string>(numbers.begin(), numbers.end()),
            (std::vector<std::string>{"0", "001", "01", "1", "2"}));
}

TEST(NumericStringCompare, OrdersTheSongsOfAShow) {
  const std::map<std::string, int, exc::NumericStringCompare> songs{{"10", 0}, {"2", 0}, {"1", 0}, {"2a", 0}};
  std::vector<std::string> order;
  for (const auto& song : songs) order.push_back(song.first);
  EXPECT_EQ(order, (std::vector<std::string>{"1", "2", "2a", "10"}));
}

namespace {

std::vector<std::string> AllTextsUpTo(std::size_t length, const std::string& alphabet) {
  std::vector<std::string> texts{""};
  std::size_t begin = 0;
  for (std::size_t size = 1; size <= length; ++size) {
    const std::size_t end = texts.size();
    for (; begin < end; ++begin) {
      for (const char c : alphabet) texts.push_back(texts[begin] + c);
    }
  }
  return texts;
}

// A list in which everything is less than all that follows it, and nothing else, is ordered by a strict total
// order, which is a strict weak one.
void ExpectStrictTotalOrder(std::vector<std::string> texts) {
  std::sort(texts.begin(), texts.end(), kLess);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (std::size_t j = 0; j < texts.size(); ++j) {
      ASSERT_EQ(kLess(texts[i], texts[j]), i < j) << '"' << texts[i] << "\" and \"" << texts[j] << '"';
    }
  }
}

}  // namespace

TEST(NumericStringCompare, IsAStrictTotalOrderOnAllShortTexts) {
  ExpectStrictTotalOrder(AllTextsUpTo(4, "019a."));
}

TEST(NumericStringCompare, IsAStrictTotalOrderOnRandomTexts) {
  std::mt19937 random(61);
  const std::string alphabet = "00123456789ab /:";
  std::set<std::string> texts;
  while (texts.size() < 600) {
    std::string text;
    for (auto length = random() % 30; length > 0; --length) text += alphabet[random() % alphabet.size()];
    texts.insert(text);
  }
  ExpectStrictTotalOrder({texts.begin(), texts.end()});
}

TEST(NumericStringCompare, AgreesWithArithmeticOnPlainNumbers) {
  std::mt19937 random(61);
  for (int round = 0; round < 20000; ++round) {
    const auto a = random() >> (random() % 32);
    const auto b = random() >> (random() % 32);
    ASSERT_EQ(kLess(std::to_string(a), std::to_string(b)), a < b) << a << " and " << b;
  }
}
