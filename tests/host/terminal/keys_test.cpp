#include "host/terminal/keys.h"

#include <gtest/gtest.h>

namespace orbel::host::terminal {
namespace {

// Every key in `bytes`, as words.
std::string Keys(KeyReader& reader, const std::string& bytes) {
  reader.Feed(bytes);
  std::string words;
  while (const auto key = reader.Next()) {
    std::string word;
    if (key->kind == Key::Kind::Command) word = ToString({key->command, 0.0, ""});
    if (key->kind == Key::Kind::PlayOrPause) word = "play-or-pause";
    if (key->kind == Key::Kind::Quit) word = "quit";
    if (key->kind == Key::Kind::Unknown) word = "unknown";
    words += (words.empty() ? "" : " ") + word;
  }
  return words;
}

std::string Keys(const std::string& bytes) {
  KeyReader reader;
  return Keys(reader, bytes);
}

TEST(Keys, EveryKeyHasItsCommand) {
  EXPECT_EQ(Keys(" psnbaq"), "go play-or-pause stop next previous again quit");
  EXPECT_EQ(Keys("+-0"), "higher lower as-written");
}

TEST(Keys, ArrowsArriveAsThreeBytesInEitherMode) {
  EXPECT_EQ(Keys("\x1b[D\x1b[C\x1b[A\x1b[B"), "left right faster slower");
  EXPECT_EQ(Keys("\x1bOD\x1bOC\x1bOA\x1bOB"), "left right faster slower");
}

TEST(Keys, AnArrowMayArriveInPieces) {
  KeyReader reader;
  EXPECT_EQ(Keys(reader, "\x1b"), "");
  EXPECT_EQ(Keys(reader, "["), "");
  EXPECT_EQ(Keys(reader, "D "), "left go");
}

TEST(Keys, OtherSequencesArePassedOverWhole) {
  EXPECT_EQ(Keys("\x1b[H\x1b[15~\x1b[1;5C "), "unknown unknown unknown go") << "none of their bytes is a key";
  EXPECT_EQ(Keys("\x1b n"), "unknown go next") << "escape alone";
  EXPECT_EQ(Keys("x\x01\xff"), "unknown unknown unknown");
}

}  // namespace
}  // namespace orbel::host::terminal
