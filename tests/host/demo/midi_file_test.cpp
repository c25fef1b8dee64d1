#include "host/demo/score/midi_file.h"

#include <gtest/gtest.h>

#include "host/demo/score/phrase.h"
#include "reference_suite/midi/standard_midi_file/smf_reader.h"

namespace {

using namespace orbel::host::demo;

TEST(DemoMidiFile, HoldsWhatTheScoreHolds) {
  Score score("Song", 480);
  score.Meter(0, 1, 4);
  score.Meter(1, 6, 8);
  score.Tempo(0, 120);
  score.Tempo(480, 100);
  score.Key(0, -3, true);
  score.Mark(480, "Here");
  score.End(score.At(3));
  Part& part = score.Add({"Flute", Voice::kFlute, 3, 73});
  Play(part, score, 0, "C4:1 D4:1", 90);
  const auto file = tesk_midi::ParseSmf(MidiFileOf(score), "song");
  EXPECT_EQ(file.format, 1u);
  EXPECT_EQ(file.division, 480u);
  ASSERT_EQ(file.tempos.size(), 2u);
  EXPECT_EQ(file.tempos[1].tick, 480u);
  EXPECT_EQ(file.tempos[1].microsecondsPerQuarter, 600'000u);
  ASSERT_EQ(file.meters.size(), 2u);
  EXPECT_EQ(file.meters[1].numerator, 6u);
  EXPECT_EQ(file.meters[1].denominator, 8u);
  ASSERT_EQ(file.keys.size(), 1u);
  EXPECT_EQ(file.keys[0].sharps, -3);
  EXPECT_TRUE(file.keys[0].minor);
  ASSERT_EQ(file.markers.size(), 1u);
  EXPECT_EQ(file.markers[0].name, "Here");
  EXPECT_EQ(file.endTick, 480u + 2 * 1440u);
  EXPECT_TRUE(file.warnings.empty());
}

}  // namespace
