#include "host/demo/score/phrase.h"

#include <gtest/gtest.h>

namespace {

using namespace orbel::host::demo;

class Phrase : public testing::Test {
 protected:
  Phrase() { score_.Meter(1, 4, 4); }

  std::string Mistake(const char* phrase) {
    try {
      Play(part_, score_, 0, phrase, 80);
    } catch (const std::logic_error& error) {
      return error.what();
    }
    return "played";
  }

  Score score_{"Song", 480};
  Part part_{"Part", Voice::kFlute};
};

TEST_F(Phrase, KeysByTheirNames) {
  EXPECT_EQ(KeyOf("C4"), 60);
  EXPECT_EQ(KeyOf("A4"), 69);
  EXPECT_EQ(KeyOf("F#5"), 78);
  EXPECT_EQ(KeyOf("Bb3"), 58);
  EXPECT_EQ(KeyOf("C0"), 12);
  EXPECT_EQ(KeyOf("B8"), 119);
  for (const char* wrong : {"", "C", "4", "H4", "C9", "C##4", "Cx4", ".4", "c4"}) {
    EXPECT_THROW(KeyOf(wrong), std::logic_error) << wrong;
  }
}

TEST_F(Phrase, NotesFollowEachOtherAndTheEndIsReturned) {
  EXPECT_EQ(Play(part_, score_, 960, "C4:1 D4:.5 -:1.5 E4+G4:1", 80), 960u + 4 * 480u);
  ASSERT_EQ(part_.notes.size(), 4u);
  EXPECT_EQ(part_.notes[0].tick, 960u);
  EXPECT_EQ(part_.notes[0].length, 432u);
  EXPECT_EQ(part_.notes[0].velocity, 80);
  EXPECT_EQ(part_.notes[1].tick, 1440u);
  EXPECT_EQ(part_.notes[1].length, 216u);
  EXPECT_EQ(part_.notes[2].tick, 2400u);
  EXPECT_EQ(part_.notes[2].key, 64);
  EXPECT_EQ(part_.notes[3].tick, 2400u);
  EXPECT_EQ(part_.notes[3].key, 67);
}

TEST_F(Phrase, MarksChangeLengthAndStrength) {
  Play(part_, score_, 0, "C4:1' C4:1_ C4:1> C4:1< C4:1'>", 80);
  EXPECT_EQ(part_.notes[0].length, 240u);
  EXPECT_EQ(part_.notes[1].length, 480u);
  EXPECT_EQ(part_.notes[2].velocity, 94);
  EXPECT_EQ(part_.notes[3].velocity, 66);
  EXPECT_EQ(part_.notes[4].length, 240u);
  EXPECT_EQ(part_.notes[4].velocity, 94);
}

TEST_F(Phrase, StrengthStaysWithinTheRangeOfMidi) {
  Play(part_, score_, 0, "C4:1>", 127);
  Play(part_, score_, 0, "C4:1<", 5);
  EXPECT_EQ(part_.notes[0].velocity, 127);
  EXPECT_EQ(part_.notes[1].velocity, 1);
}

TEST_F(Phrase, ThreeThirdsMakeAWhole) {
  EXPECT_EQ(Play(part_, score_, 0, "C4:.3333 C4:.3333 C4:.3334", 80), 480u);
}

TEST_F(Phrase, BarLinesMustBeBarLines) {
  EXPECT_EQ(Play(part_, score_, 0, "C4:4 | D4:4 | E4:1", 80), 9 * 480u);
  EXPECT_EQ(Mistake("C4:3 | D4:1"), "Song: no bar line at tick 1440 of \"C4:3 | D4:1\"");
}

TEST_F(Phrase, WordsThatMeanNothingAreQuoted) {
  EXPECT_EQ(Mistake("C4"), "\"C4\" is no note, chord or rest");
  EXPECT_EQ(Mistake("C4:"), "\"C4:\" is no note, chord or rest");
  EXPECT_EQ(Mistake("C4:0"), "\"C4:0\" is no note, chord or rest");
  EXPECT_EQ(Mistake("C4:1.2.3"), "\"C4:1.2.3\" is no note, chord or rest");
  EXPECT_EQ(Mistake("C4:1?"), "\"C4:1?\" is no note, chord or rest");
  EXPECT_EQ(Mistake(":1"), "\":1\" is no note, chord or rest");
  EXPECT_EQ(Mistake("C4+X:1"), "\"X\" is no note, chord or rest");
}

TEST_F(Phrase, RhythmsHaveThreeStrengths) {
  EXPECT_EQ(Beat(part_, score_, 480, 38, "Xx.o", 0.5, 80), 480u + 960u);
  ASSERT_EQ(part_.notes.size(), 3u);
  EXPECT_EQ(part_.notes[0].velocity, 94);
  EXPECT_EQ(part_.notes[1].tick, 720u);
  EXPECT_EQ(part_.notes[1].velocity, 80);
  EXPECT_EQ(part_.notes[2].tick, 1200u);
  EXPECT_EQ(part_.notes[2].velocity, 66);
  EXPECT_EQ(part_.notes[2].key, 38);
  EXPECT_THROW(Beat(part_, score_, 0, 38, "x-x", 0.5, 80), std::logic_error);
}

}  // namespace
