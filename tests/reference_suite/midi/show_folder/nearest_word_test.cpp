#include "reference_suite/midi/show_folder/nearest_word.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using tesk_midi::EditDistance;
using tesk_midi::NearestWord;

TEST(EditDistance, CountsLettersPutInTakenOutAndReplaced) {
  EXPECT_EQ(EditDistance("", ""), 0u);
  EXPECT_EQ(EditDistance("vamp", "vamp"), 0u);
  EXPECT_EQ(EditDistance("", "vamp"), 4u);
  EXPECT_EQ(EditDistance("vamp", ""), 4u);
  EXPECT_EQ(EditDistance("vam", "vamp"), 1u);
  EXPECT_EQ(EditDistance("vamps", "vamp"), 1u);
  EXPECT_EQ(EditDistance("vimp", "vamp"), 1u);
  EXPECT_EQ(EditDistance("form", "from"), 2u);
  EXPECT_EQ(EditDistance("kitten", "sitting"), 3u);
}

TEST(NearestWord, IsTheOneThatWasProbablyMeant) {
  constexpr std::array<std::string_view, 4> kWords{"from", "to", "exit", "passes"};
  EXPECT_EQ(NearestWord("form", kWords), "from");
  EXPECT_EQ(NearestWord("exti", kWords), "exit");
  EXPECT_EQ(NearestWord("pases", kWords), "passes");
  EXPECT_EQ(NearestWord("passes", kWords), "passes");
  EXPECT_EQ(NearestWord("colour", kWords), "");
  EXPECT_EQ(NearestWord("at", kWords), "") << "two letters of two are another word";
  EXPECT_EQ(NearestWord("tq", kWords), "to");
  EXPECT_EQ(NearestWord("t", kWords), "") << "one letter could be anything";
  EXPECT_EQ(NearestWord("", kWords), "");
  EXPECT_EQ(NearestWord(std::string(65, 'x'), kWords), "");
  EXPECT_EQ(NearestWord("from", {}), "");
}

TEST(NearestWord, FirstOfThoseThatAreEquallyNear) {
  constexpr std::array<std::string_view, 3> kWords{"aaab", "aaac", "aaaa"};
  EXPECT_EQ(NearestWord("aaad", kWords), "aaab");
  EXPECT_EQ(NearestWord("aaaa", kWords), "aaaa");
}

}  // namespace
