// What is taken out of the tracks, and in which order.

#include <gtest/gtest.h>

#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"

namespace {

using namespace midi_bytes;
using tesk_midi::StandardMidiFile;

TEST(SmfEvents, TempoHoldsItsWholeMicroseconds) {
  const StandardMidiFile file = ParsedTrack({Tempo(0, 1), Tempo(10, 16'777'215)});
  ASSERT_EQ(file.tempos.size(), 2u);
  EXPECT_EQ(file.tempos[0].microsecondsPerQuarter, 1u);
  EXPECT_EQ(file.tempos[1].tick, 10u);
  EXPECT_EQ(file.tempos[1].microsecondsPerQuarter, 16'777'215u);
}

TEST(SmfEvents, MeterHoldsTheNoteValueOfItsBeat) {
  const StandardMidiFile file = ParsedTrack(
      {Meta(0, 0x58, {7, 3, 24, 8}), Meta(2, 0x58, {255, 0, 24, 8}), Meta(2, 0x58, {1, 6, 24, 8})});
  ASSERT_EQ(file.meters.size(), 3u);
  EXPECT_EQ(file.meters[0].numerator, 7u);
  EXPECT_EQ(file.meters[0].denominator, 8u);
  EXPECT_EQ(file.meters[1].tick, 2u);
  EXPECT_EQ(file.meters[1].numerator, 255u);
  EXPECT_EQ(file.meters[1].denominator, 1u);
  EXPECT_EQ(file.meters[2].tick, 4u);
  EXPECT_EQ(file.meters[2].denominator, 64u);
}

TEST(SmfEvents, KeysFromSevenFlatsToSevenSharps) {
  const StandardMidiFile file = ParsedTrack({Meta(0, 0x59, {0xF9, 0}), Meta(3, 0x59, {7, 1})});
  ASSERT_EQ(file.keys.size(), 2u);
  EXPECT_EQ(file.keys[0].sharps, -7);
  EXPECT_FALSE(file.keys[0].minor);
  EXPECT_EQ(file.keys[1].tick, 3u);
  EXPECT_EQ(file.keys[1].sharps, 7);
  EXPECT_TRUE(file.keys[1].minor);
}

TEST(SmfEvents, MarkersKeepTheirBytes) {
  const StandardMidiFile file = ParsedTrack({Meta(0, 0x06, {'A', 0xE9, 0x00}), Meta(1, 0x06, {})});
  ASSERT_EQ(file.markers.size(), 2u);
  EXPECT_EQ(file.markers[0].name, std::string("A\xE9\0", 3));
  EXPECT_EQ(file.markers[1].name, "");
  EXPECT_EQ(file.markers[1].tick, 1u);
}

TEST(SmfEvents, EveryTrackIsReadAndMergedInTickOrder) {
  const StandardMidiFile file =
      Parsed(File({Track({Tempo(0, 1), Tempo(20, 4)}), Track({Tempo(10, 2), Tempo(5, 3)})}));
  ASSERT_EQ(file.tempos.size(), 4u);
  for (std::uint32_t index = 0; index < 4; ++index) {
    EXPECT_EQ(file.tempos[index].microsecondsPerQuarter, index + 1);
  }
}

TEST(SmfEvents, WithinATickTracksKeepTheirOrderAndSoDoEventsOfATrack) {
  const StandardMidiFile file =
      Parsed(File({Track({Meta(9, 0x06, {'1'}), Meta(0, 0x06, {'2'})}), Track({Meta(9, 0x06, {'3'})}),
                   Track({Meta(0, 0x06, {'0'}), Meta(9, 0x06, {'4'})})}));
  std::string order;
  for (const auto& marker : file.markers) order += marker.name;
  EXPECT_EQ(order, "01234");
}

TEST(SmfEvents, TenThousandTemposAreRead) {
  const Bytes track = Chunk("MTrk", Joined({Repeated(Tempo(1, 400'000), 10'000), {0, 0xFF, 0x2F, 0}}));
  const StandardMidiFile file = Parsed(File({track}));
  EXPECT_EQ(file.tempos.size(), 10'000u);
  EXPECT_EQ(file.endTick, 10'000u);
}

}  // namespace
