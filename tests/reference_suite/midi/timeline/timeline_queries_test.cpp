#include <gtest/gtest.h>

#include <limits>

#include "suite/midi/timeline.h"
#include "tests/reference_suite/midi/timeline/made_timeline.h"
#include "tests/support/allocation_watch.h"

namespace {

using made_timeline::Midi;
using made_timeline::Song;

std::string Place(const TL::Timeline& timeline, unsigned tick) {
  const TL::BarBeatTick place = timeline.GetBarBeatTick(tick);
  return std::to_string(place.bar) + "." + std::to_string(place.beat) + "." + std::to_string(place.tick);
}

// Bars 1 and 2 in 4/4, from tick 3840 in 6/8 (1440 ticks a bar), and the end in the middle of bar 4.
TL::Timeline TwoMeters() {
  return Song(Midi(6000, {{0, 4, 4}, {3840, 6, 8}})).GetTimeline();
}

struct Row {
  unsigned tick;
  const char* place;
  unsigned barStart;
  unsigned beatStart;
  unsigned barLine;  // at or after
  unsigned beat;     // at or after
};

class TimelineQueries : public testing::TestWithParam<Row> {};

TEST_P(TimelineQueries, PlaceAndLinesAroundATick) {
  const TL::Timeline timeline = TwoMeters();
  const Row& row = GetParam();
  EXPECT_EQ(Place(timeline, row.tick), row.place);
  EXPECT_EQ(timeline.GetBarStart(row.tick), row.barStart);
  EXPECT_EQ(timeline.GetBeatStart(row.tick), row.beatStart);
  EXPECT_EQ(timeline.GetBarLineAtOrAfter(row.tick), row.barLine);
  EXPECT_EQ(timeline.GetBeatAtOrAfter(row.tick), row.beat);
}

INSTANTIATE_TEST_SUITE_P(
    TwoMeters, TimelineQueries,
    testing::Values(Row{0, "1.1.0", 0, 0, 0, 0},           // on a bar line
                    Row{1, "1.1.1", 0, 0, 1920, 480},      // just behind it
                    Row{479, "1.1.479", 0, 0, 1920, 480},  // before a beat
                    Row{480, "1.2.0", 0, 480, 1920, 480},  // on a beat
                    Row{1919, "1.4.479", 0, 1440, 1920, 1920}, Row{1920, "2.1.0", 1920, 1920, 1920, 1920},
                    Row{3839, "2.4.479", 1920, 3360, 3840, 3840},
                    Row{3840, "3.1.0", 3840, 3840, 3840, 3840},  // the other meter
                    Row{4081, "3.2.1", 3840, 4080, 5280, 4320}, Row{5280, "4.1.0", 5280, 5280, 5280, 5280},
                    Row{5999, "4.3.239", 5280, 5760, 6000, 6000},  // no line before the end
                    Row{6000, "4.4.0", 5280, 6000, 6000, 6000},    // the end
                    Row{6001, "4.4.1", 5280, 6000, 6000, 6000},    // past the end
                    Row{6720, "5.1.0", 6720, 6720, 6000, 6000}));  // counted on

TEST(Timeline, EndOnABarLineIsTheNextBar) {
  const TL::Timeline timeline = Song(Midi(3840)).GetTimeline();
  EXPECT_EQ(Place(timeline, 3839), "2.4.479");
  EXPECT_EQ(Place(timeline, 3840), "3.1.0");
  EXPECT_EQ(timeline.GetBarLineAtOrAfter(1921), 3840u);
}

TEST(Timeline, BarsAreCountedOnToTheLargestTick) {
  const TL::Timeline timeline = Song(Midi(3840)).GetTimeline();
  const unsigned last = std::numeric_limits<unsigned>::max();
  EXPECT_EQ(Place(timeline, last), "2236963.1.255");
  EXPECT_EQ(timeline.GetBarStart(last), last - 255);
  EXPECT_EQ(timeline.GetBarLineAtOrAfter(last), 3840u);
  EXPECT_EQ(timeline.GetBeatAtOrAfter(last), 3840u);
}

TEST(Timeline, BarThatAMeterCutsShortEndsThere) {
  const TL::Timeline timeline = Song(Midi(7680, {{0, 4, 4}, {2700, 3, 4}})).GetTimeline();
  EXPECT_EQ(Place(timeline, 2699), "2.2.299");
  EXPECT_EQ(Place(timeline, 2700), "3.1.0");
  EXPECT_EQ(timeline.GetBarLineAtOrAfter(1921), 2700u);
  EXPECT_EQ(timeline.GetBeatAtOrAfter(2401), 2700u);
}

// 481 a quarter: an eighth lasts 240.5 ticks, a bar of 7/8 1683.5.
TEST(Timeline, BeatsThatAreNoWholeTicksAreRoundedDownEachForItself) {
  tesk_midi::StandardMidiFile midi = Midi(6734, {{0, 7, 8}});
  midi.division = 481;
  const TL::Timeline timeline = Song(midi).GetTimeline();
  EXPECT_EQ(made_timeline::BarsText(timeline), "1@0:7x240 2@1683:7x240 3@3367:7x240 4@5050:7x240");
  EXPECT_EQ(Place(timeline, 239), "1.1.239");
  EXPECT_EQ(Place(timeline, 240), "1.2.0");
  EXPECT_EQ(Place(timeline, 480), "1.2.240");
  EXPECT_EQ(Place(timeline, 481), "1.3.0") << "two beats are 481 ticks";
  EXPECT_EQ(Place(timeline, 1682), "1.7.239");
  EXPECT_EQ(Place(timeline, 1683), "2.1.0");
  EXPECT_EQ(Place(timeline, 6734), "5.1.0") << "four bars are 6734 ticks";
  EXPECT_EQ(timeline.GetBeatAtOrAfter(241), 481u);
  EXPECT_EQ(Place(timeline, 1923), "2.1.240");
  EXPECT_EQ(Place(timeline, 1924), "2.2.0")
      << "eight beats are 1924 ticks, whatever the bar line was rounded to";
}

TEST(Timeline, WithoutBarsIsOneBarThatNeverEnds) {
  TL::Timeline timeline;
  timeline.SetMidiEndTicks(1000);
  EXPECT_EQ(Place(timeline, 0), "1.1.0");
  EXPECT_EQ(Place(timeline, 4294967295u), "1.1.4294967295");
  EXPECT_EQ(timeline.GetBarStart(999), 0u);
  EXPECT_EQ(timeline.GetBeatStart(999), 0u);
  EXPECT_EQ(timeline.GetBarLineAtOrAfter(0), 0u);
  EXPECT_EQ(timeline.GetBarLineAtOrAfter(1), 1000u);
  EXPECT_EQ(timeline.GetBeatAtOrAfter(1), 1000u);
}

TEST(Timeline, QueriesAllocateNothing) {
  const TL::Timeline timeline = TwoMeters();
  test_support::AllocationWatch watch;
  timeline.GetBarBeatTick(5000);
  timeline.GetBarLineAtOrAfter(5000);
  timeline.GetBeatAtOrAfter(5000);
  timeline.GetBarStart(5000);
  timeline.GetBeatStart(5000);
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
