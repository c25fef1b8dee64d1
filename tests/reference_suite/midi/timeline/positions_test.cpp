#include "suite/midi/positions.h"

#include <gtest/gtest.h>

#include "tests/reference_suite/midi/timeline/made_timeline.h"
#include "tests/support/throws_with_text.h"

namespace {

using made_timeline::Midi;
using made_timeline::Song;
using tesk_midi::ParsePosition;
using tesk_midi::PositionError;
using tesk_midi::PositionToString;
using test_support::ThrowsWithText;

tesk_midi::SongData FortyEightBars() {
  return Song(Midi(48 * 1920));
}

TEST(Positions, EveryFormMeansItsTick) {
  const tesk_midi::SongData song = FortyEightBars();
  EXPECT_EQ(ParsePosition(song, "17"), 30720u);
  EXPECT_EQ(ParsePosition(song, "17.3"), 31680u);
  EXPECT_EQ(ParsePosition(song, "17.3.120"), 31800u);
  EXPECT_EQ(ParsePosition(song, "end"), 92160u);
  EXPECT_EQ(ParsePosition(song, "tick:30721"), 30721u);
  EXPECT_EQ(ParsePosition(song, "tick:92160"), 92160u);
}

TEST(Positions, TicksMayLeadIntoLaterBeats) {
  EXPECT_EQ(ParsePosition(FortyEightBars(), "17.3.1000"), 32680u);
}

TEST(Positions, BeatIsTheDenominatorOfTheMeter) {
  const tesk_midi::SongData song = Song(Midi(7680, {{0, 6, 8}, {2880, 3, 2}}));
  EXPECT_EQ(ParsePosition(song, "2.6"), 2640u);
  EXPECT_EQ(ParsePosition(song, "3.3"), 4800u);
}

TEST(Positions, TextAlwaysHasThreeParts) {
  const tesk_midi::SongData song = FortyEightBars();
  EXPECT_EQ(PositionToString(song, 0), "1.1.0");
  EXPECT_EQ(PositionToString(song, 30720), "17.1.0");
  EXPECT_EQ(PositionToString(song, 31800), "17.3.120");
}

TEST(Positions, BarLineAtTheEndIsTheBarAfterTheLast) {
  const tesk_midi::SongData song = FortyEightBars();
  EXPECT_EQ(PositionToString(song, 92160), "49.1.0");
  EXPECT_EQ(ParsePosition(song, "49"), 92160u);
  EXPECT_EQ(ParsePosition(song, "49.1.0"), 92160u);
}

TEST(Positions, BarsCountFromTheFirstBar) {
  const tesk_midi::SongData song = Song(Midi(48 * 1920), 0);
  EXPECT_EQ(ParsePosition(song, "0"), 0u);
  EXPECT_EQ(ParsePosition(song, "1"), 1920u);
  EXPECT_TRUE(ThrowsWithText<PositionError>([&] { ParsePosition(song, "49"); },
                                            "bar 49 does not exist: the song has bars 0 to 47"));
}

struct Row {
  const char* text;
  const char* error;
};

class PositionErrors : public testing::TestWithParam<Row> {};

TEST_P(PositionErrors, SayWhatIsWrongAndWhatThereIs) {
  const tesk_midi::SongData song = FortyEightBars();
  EXPECT_TRUE(ThrowsWithText<PositionError>([&] { ParsePosition(song, GetParam().text); }, GetParam().error));
}

const char kNoPosition[] =
    "not a position; write a bar (\"17\"), bar and beat (\"17.3\"), bar, beat and ticks (\"17.3.120\"), "
    "\"tick:30720\" or \"end\"";

INSTANTIATE_TEST_SUITE_P(
    FortyEightBars, PositionErrors,
    testing::Values(Row{"", kNoPosition}, Row{"seventeen", kNoPosition},
                    Row{"99", "bar 99 does not exist: the song has bars 1 to 48"},
                    Row{"50", "bar 50 does not exist: the song has bars 1 to 48"},
                    Row{"0", "bar 0 does not exist: the song has bars 1 to 48"},
                    Row{"999999999999999999",
                        "bar 999999999999999999 does not exist: the song has bars 1 to 48"},
                    Row{"17.0", "beat 0 of bar 17 does not exist: the bar has beats 1 to 4"},
                    Row{"17.5", "beat 5 of bar 17 does not exist: the bar has beats 1 to 4"},
                    Row{"49.2", "tick 92640 does not exist: the song ends at tick 92160 (49.1.0)"},
                    Row{"48.4.481", "tick 92161 does not exist: the song ends at tick 92160 (49.1.0)"},
                    Row{"tick:92161", "tick 92161 does not exist: the song ends at tick 92160 (49.1.0)"},
                    Row{"1.1.999999999999999999",
                        "tick 999999999999999999 does not exist: the song ends at tick 92160 (49.1.0)"}));

TEST(PositionErrors, SongOfOneBarAndBarOfOneBeat) {
  const tesk_midi::SongData song = Song(Midi(400, {{0, 1, 4}}));
  EXPECT_TRUE(ThrowsWithText<PositionError>([&] { ParsePosition(song, "2"); },
                                            "bar 2 does not exist: the song has only bar 1"));
  EXPECT_TRUE(ThrowsWithText<PositionError>([&] { ParsePosition(song, "1.2"); },
                                            "beat 2 of bar 1 does not exist: the bar has only beat 1"));
}

TEST(PositionErrors, BeatBehindTheEndOfAnUnfinishedBar) {
  const tesk_midi::SongData song = Song(Midi(1200));
  EXPECT_EQ(ParsePosition(song, "1.3"), 960u);
  EXPECT_TRUE(ThrowsWithText<PositionError>(
      [&] { ParsePosition(song, "1.4"); }, "tick 1440 does not exist: the song ends at tick 1200 (1.3.240)"));
  EXPECT_TRUE(ThrowsWithText<PositionError>([&] { ParsePosition(song, "2"); },
                                            "bar 2 does not exist: the song has only bar 1"));
}

TEST(PositionErrors, BarThatAMeterCutsShortHasFewerBeats) {
  const tesk_midi::SongData song = Song(Midi(7680, {{0, 4, 4}, {2700, 3, 4}}));
  EXPECT_EQ(ParsePosition(song, "2.2"), 2400u);
  EXPECT_TRUE(ThrowsWithText<PositionError>([&] { ParsePosition(song, "2.3"); },
                                            "beat 3 of bar 2 does not exist: the bar has beats 1 to 2"));
}

TEST(PositionErrors, SongWithoutBars) {
  TL::Timeline timeline;
  timeline.SetMidiEndTicks(1000);
  const tesk_midi::SongData song("3", "Waltz", 480, timeline);
  EXPECT_TRUE(ThrowsWithText<PositionError>([&] { ParsePosition(song, "1"); }, "the song has no bars"));
  EXPECT_EQ(ParsePosition(song, "tick:1000"), 1000u);
}

}  // namespace
