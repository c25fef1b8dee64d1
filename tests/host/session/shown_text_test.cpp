#include "host/session/shown_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace orbel::host {
namespace {

TEST(Shown, PlainTextStaysAsItIs) {
  EXPECT_EQ(Shown("12 Wälzer – 日本 🎻"), "12 Wälzer – 日本 🎻");
  EXPECT_EQ(Shown(""), "");
}

TEST(Shown, NothingCanMoveTheCursorOrForgeALine) {
  EXPECT_EQ(Shown("a\x1b[2Jb"), "a\\x1b[2Jb");
  EXPECT_EQ(Shown("a\nb\rc\td\x7f"), "a\\x0ab\\x0dc\\x09d\\x7f");
  EXPECT_EQ(Shown(std::string_view("a\0b", 3)), "a\\x00b");
  EXPECT_EQ(Shown("\xc2\x9b"
                  "2J"),
            "\\xc2\\x9b2J")
      << "the one-byte form of ESC [";
  EXPECT_EQ(Shown("\xe2\x80\xae"
                  "gpj.exe"),
            "\\xe2\\x80\\xaegpj.exe")
      << "right to left override";
}

TEST(Shown, BytesThatAreNotUtf8AreEscapedOneByOne) {
  EXPECT_EQ(Shown("\xff\xfe.wav"), "\\xff\\xfe.wav");
  EXPECT_EQ(Shown("\xc3"), "\\xc3") << "cut short";
  EXPECT_EQ(Shown("\xc0\xaf"), "\\xc0\\xaf") << "overlong";
  EXPECT_EQ(Shown("\xed\xa0\x80"), "\\xed\\xa0\\x80") << "surrogate";
  EXPECT_EQ(Shown("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80") << "past the last code point";
}

TEST(ShownInShort, HasSixtyCharactersAtMostAndNeverPartOfOne) {
  const std::string sixty(60, 'a');
  EXPECT_EQ(ShownInShort(""), "");
  EXPECT_EQ(ShownInShort(sixty), sixty);
  EXPECT_EQ(ShownInShort(sixty + "b"), sixty + "...");
  EXPECT_EQ(ShownInShort(std::string(59, 'a') + "\u00e9b"), std::string(59, 'a') + "\u00e9...");
  EXPECT_EQ(ShownInShort(std::string(59, 'a') + "\x1b" + "b"), std::string(59, 'a') + "\\x1b...");
  EXPECT_EQ(ShownInShort(std::string(100'000, '\xff')).size(), 60U * 4 + 3);
}

TEST(MinutesAndSeconds, RoundsToMilliseconds) {
  EXPECT_EQ(MinutesAndSeconds(0.0), "0:00.000");
  EXPECT_EQ(MinutesAndSeconds(187.25), "3:07.250");
  EXPECT_EQ(MinutesAndSeconds(59.9996), "1:00.000");
  EXPECT_EQ(MinutesAndSeconds(3600.0), "60:00.000");
}

TEST(ShortNumber, HasAPointInEveryLocaleAndNoExponent) {
  EXPECT_EQ(ShortNumber(1.0), "1");
  EXPECT_EQ(ShortNumber(0.95), "0.95");
  EXPECT_EQ(ShortNumber(100000.0), "100000");
  EXPECT_EQ(ShortNumber(-2.5), "-2.5");
  EXPECT_EQ(ShortNumber(std::numeric_limits<double>::max()).size(), 309U);
}

}  // namespace
}  // namespace orbel::host
