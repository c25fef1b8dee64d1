#include "reference_suite/midi/timeline/tick_scaling.h"

#include <gtest/gtest.h>

#include "reference_suite/midi/timeline/timeline_error.h"
#include "tests/reference_suite/midi/timeline/made_timeline.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_midi::TickMultiplier;
using tesk_midi::TimelineError;
using test_support::ThrowsWithText;

struct Row {
  unsigned division;
  unsigned microsecondsPerQuarter;
  unsigned multiplier;
  const char* why;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.division << " at " << row.microsecondsPerQuarter << " (" << row.why << ")";
}

class TickMultipliers : public testing::TestWithParam<Row> {};

TEST_P(TickMultipliers, SmallestThatIsFineEnough) {
  tesk_midi::StandardMidiFile midi = made_timeline::Midi(1000);
  midi.division = GetParam().division;
  midi.tempos = {{0, GetParam().microsecondsPerQuarter}};
  EXPECT_EQ(TickMultiplier(midi), GetParam().multiplier);
}

INSTANTIATE_TEST_SUITE_P(Divisions, TickMultipliers,
                         testing::Values(Row{480, 500'000, 1, "most files load as they are"},
                                         Row{960, 500'000, 1, "finer than needed"},
                                         Row{479, 500'000, 2, "one short of 480"},
                                         Row{24, 500'000, 20, "480 exactly"},
                                         Row{96, 500'000, 5, "480 exactly"},
                                         Row{77, 500'000, 7, "539, the first multiple above 480"},
                                         Row{1, 500'000, 480, "the coarsest file"},
                                         Row{480, 1'200'000, 1, "a tick of 2.5 ms is short enough"},
                                         Row{480, 1'200'001, 2, "a tick of just over 2.5 ms is not"},
                                         Row{480, 16'777'215, 14, "the slowest tempo that a file holds"},
                                         Row{32'767, 16'777'215, 1, "the finest division"},
                                         Row{1, 16'777'215, 6711, "the slowest in the coarsest"}));

TEST(TickMultiplier, SlowestTempoDecidesWhereverItStands) {
  tesk_midi::StandardMidiFile midi = made_timeline::Midi(1000);
  midi.tempos = {{0, 500'000}, {10, 2'400'000}, {20, 400'000}};
  EXPECT_EQ(TickMultiplier(midi), 2u);
}

TEST(TickMultiplier, FileWithoutTempo) {
  tesk_midi::StandardMidiFile midi = made_timeline::Midi(1000);
  midi.tempos.clear();
  EXPECT_EQ(TickMultiplier(midi), 1u);
  midi.tempos = {{10, 400'000}};
  EXPECT_EQ(TickMultiplier(midi), 1u);
}

TEST(TickMultiplier, PpqAboveSixteenBitsIsRefused) {
  tesk_midi::StandardMidiFile midi = made_timeline::Midi(1000);
  midi.division = 1;
  midi.tempos = {{0, 65'535 * 2500}};
  EXPECT_EQ(TickMultiplier(midi), 65'535u);
  midi.tempos = {{0, 65'535 * 2500 + 1}};
  EXPECT_TRUE(ThrowsWithText<TimelineError>(
      [&] { TickMultiplier(midi); },
      "the song needs 65536 ticks per quarter note, more than 65535; make its slowest tempo faster."));
}

TEST(TickMultiplier, TicksPastThirtyTwoBitsAreRefused) {
  tesk_midi::StandardMidiFile midi = made_timeline::Midi(2'147'483'646);
  midi.division = 240;
  EXPECT_EQ(TickMultiplier(midi), 2u);
  midi.endTick = 2'147'483'647;
  EXPECT_TRUE(
      ThrowsWithText<TimelineError>([&] { TickMultiplier(midi); },
                                    "the song is 4294967294 ticks long, more than 4294967292; see that no "
                                    "track ends long after the music."));
}

}  // namespace
