#include "reference_suite/midi/timeline/bar_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference_suite/midi/timeline/timeline_error.h"
#include "tests/reference_suite/midi/timeline/made_timeline.h"
#include "tests/support/throws_with_text.h"

namespace {

using made_timeline::BarsText;
using made_timeline::Midi;
using made_timeline::Song;
using tesk_midi::TimelineError;
using test_support::ThrowsWithText;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Warnings(const tesk_midi::StandardMidiFile& midi) {
  return tesk_midi::BuildTimeline(midi, 1).warnings;
}

TEST(BarLines, FourFourHoldsUntilTheFirstMeter) {
  EXPECT_EQ(BarsText(Song(Midi(3840)).GetTimeline()), "1@0:4x480 2@1920:4x480");
  EXPECT_EQ(BarsText(Song(Midi(3840, {{1920, 2, 4}})).GetTimeline()), "1@0:4x480 2@1920:2x480 3@2880:2x480");
}

TEST(BarLines, LastBarMayBeUnfinished) {
  EXPECT_EQ(BarsText(Song(Midi(1921)).GetTimeline()), "1@0:4x480 2@1920:4x480");
  EXPECT_EQ(BarsText(Song(Midi(1)).GetTimeline()), "1@0:4x480");
}

TEST(BarLines, FirstBarHasItsNumber) {
  EXPECT_EQ(BarsText(Song(Midi(3840), 0).GetTimeline()), "0@0:4x480 1@1920:4x480");
  EXPECT_EQ(BarsText(Song(Midi(3840), 101).GetTimeline()), "101@0:4x480 102@1920:4x480");
}

TEST(BarLines, MeterChangeInMidBarStartsANewBarWithAWarning) {
  const tesk_midi::StandardMidiFile midi = Midi(7680, {{0, 4, 4}, {2700, 3, 4}});
  EXPECT_EQ(BarsText(Song(midi).GetTimeline()),
            "1@0:4x480 2@1920:2x480 3@2700:3x480 4@4140:3x480 5@5580:3x480 6@7020:3x480");
  EXPECT_THAT(Warnings(midi),
              ElementsAre("the meter changes to 3/4 within bar 2; a new bar begins there, at tick 2700."));
}

TEST(BarLines, BarCutOnABeatHasTheBeatsBeforeIt) {
  EXPECT_EQ(BarsText(Song(Midi(3840, {{0, 4, 4}, {2400, 4, 4}})).GetTimeline()),
            "1@0:4x480 2@1920:1x480 3@2400:4x480");
}

TEST(BarLines, MeterOnABarLineNeedsNoWarning) {
  EXPECT_THAT(Warnings(Midi(7680, {{0, 4, 4}, {1920, 3, 4}, {3360, 6, 8}})), IsEmpty());
}

TEST(BarLines, MeterAtOrAfterTheEndChangesNoBar) {
  tesk_midi::StandardMidiFile midi = Midi(1000, {{0, 4, 4}, {1000, 3, 4}});
  EXPECT_EQ(BarsText(Song(midi).GetTimeline()), "1@0:4x480");
  EXPECT_THAT(Warnings(midi), IsEmpty());
}

TEST(BarLines, ManyWarningsAreCounted) {
  std::vector<tesk_midi::SmfMeter> meters;
  for (unsigned i = 0; i < 23; ++i) meters.push_back({i * 100, 4, 4});
  const auto warnings = Warnings(Midi(5000, meters));
  ASSERT_EQ(warnings.size(), 21u);
  EXPECT_EQ(warnings[20], "2 more meter changes lie within a bar.");
}

TEST(BarLines, MoreBarsThanAnySongHasAreRefused) {
  EXPECT_EQ(Song(Midi(480 * 100'000, {{0, 1, 4}})).GetTimeline().GetBarsBeats().GetSize(), 100'000u);
  EXPECT_TRUE(ThrowsWithText<TimelineError>(
      [] {
        Song(Midi(480 * 100'000 + 1, {{0, 1, 4}}));
      },
      "the song has more than 100000 bars; see that its meters are right and "
      "that no track ends long after the music."));
}

}  // namespace
