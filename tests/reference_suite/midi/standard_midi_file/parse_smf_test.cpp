// The shape of a file: header, chunks, ticks, the end.

#include <gtest/gtest.h>

#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"

namespace {

using namespace midi_bytes;
using tesk_midi::StandardMidiFile;

TEST(ParseSmf, ReadsFormatDivisionAndEnd) {
  const StandardMidiFile file =
      Parsed(Joined({Header(0, 1, 960), Track({Tempo(0, 500'000), Event(96, {0x90, 60, 100})})}));
  EXPECT_EQ(file.format, 0u);
  EXPECT_EQ(file.division, 960u);
  EXPECT_EQ(file.endTick, 96u);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(ParseSmf, EndIsTheLargestEndOfTrackOfAllTracks) {
  const Bytes late{0x83, 0x60, 0xFF, 0x2F, 0x00};  // End Of Track at tick 480
  const StandardMidiFile file =
      Parsed(File({Track({Tempo(0, 500'000)}), OpenTrack({late}), Track({Event(100, {0x90, 60, 0})})}));
  EXPECT_EQ(file.endTick, 480u);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(ParseSmf, LargestDivisionAndSmallestAreAccepted) {
  EXPECT_EQ(Parsed(Joined({Header(1, 1, 32'767), Track({})})).division, 32'767u);
  EXPECT_EQ(Parsed(Joined({Header(1, 1, 1), Track({})})).division, 1u);
}

TEST(ParseSmf, QuantitiesOfOneToFourBytes) {
  const Bytes tempo{0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20};
  const StandardMidiFile file = ParsedTrack(
      {{0x7F}, tempo, {0x81, 0x00}, tempo, {0xC0, 0x80, 0x00}, tempo, {0xFF, 0xFF, 0xFF, 0x7F}, tempo});
  ASSERT_EQ(file.tempos.size(), 4u);
  EXPECT_EQ(file.tempos[0].tick, 0x7Fu);
  EXPECT_EQ(file.tempos[1].tick, 0x7Fu + 0x80u);
  EXPECT_EQ(file.tempos[2].tick, 0x7Fu + 0x80u + 0x100000u);
  EXPECT_EQ(file.tempos[3].tick, 0x7Fu + 0x80u + 0x100000u + 0xFFFFFFFu);
}

TEST(ParseSmf, RunningStatusSavesTheStatusByte) {
  const StandardMidiFile file = ParsedTrack(
      {Tempo(0, 500'000), Event(0, {0x90, 60, 100}), Event(10, {60, 0}), Event(5, {0xC1, 7}), Event(5, {8})});
  EXPECT_EQ(file.endTick, 20u);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(ParseSmf, EveryChannelMessageHasItsOwnLength) {
  const StandardMidiFile file = ParsedTrack(
      {Tempo(0, 500'000), Event(1, {0x80, 1, 2}), Event(1, {0x91, 1, 2}), Event(1, {0xA2, 1, 2}),
       Event(1, {0xB3, 1, 2}), Event(1, {0xC4, 1}), Event(1, {0xD5, 1}), Event(1, {0xEF, 0x7F, 0x7F})});
  EXPECT_EQ(file.endTick, 7u);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(ParseSmf, SysExOfBothKindsIsSteppedOver) {
  const StandardMidiFile file = ParsedTrack(
      {Tempo(0, 500'000), Event(1, {0xF0, 3, 0x43, 0x12, 0xF7}), Event(1, {0xF7, 2, 0xF3, 0x01})});
  EXPECT_EQ(file.endTick, 2u);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(ParseSmf, AnyOtherMetaEventIsSteppedOver) {
  const StandardMidiFile file =
      ParsedTrack({Tempo(0, 500'000), Meta(1, 0x01, {'t'}), Meta(1, 0x20, {0}),
                   Meta(1, 0x54, {0, 0, 0, 0, 0}), Meta(1, 0x7F, {1, 2}), Meta(1, 0xFE, {})});
  EXPECT_EQ(file.endTick, 5u);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(ParseSmf, UnknownChunksAreSkippedWhereverTheyStand) {
  const Bytes unknown = Chunk("XFIH", {1, 2, 3});
  const StandardMidiFile file =
      Parsed(Joined({Header(1, 1, 480), unknown, Track({Tempo(0, 500'000)}), unknown, Chunk("zero", {})}));
  EXPECT_EQ(file.tempos.size(), 1u);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(ParseSmf, LongerHeaderIsSteppedOver) {
  const Bytes header = Chunk("MThd", Joined({Number(1, 2), Number(1, 2), Number(480, 2), Bytes{9, 9, 9}}));
  EXPECT_EQ(Parsed(Joined({header, Track({Tempo(0, 500'000)})})).tempos.size(), 1u);
}

TEST(ParseSmf, AFileOfManyTracksUpToTheLimitIsRead) {
  const Bytes file = Joined({Header(1, 256, 480), Repeated(Track({Tempo(1, 500'000)}), 256)});
  EXPECT_EQ(Parsed(file).tempos.size(), 256u);
}

}  // namespace
