// What is read all the same, and the warning that tells of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"

namespace {

using namespace midi_bytes;
using tesk_midi::StandardMidiFile;
using testing::ElementsAre;
using testing::IsEmpty;

const Bytes kStart = Tempo(0, 500'000);  // seven bytes: what follows stands at byte 29

TEST(SmfTolerance, MissingEndOfTrackEndsWithTheLastEvent) {
  const StandardMidiFile file = Parsed(File({OpenTrack({kStart, Event(96, {0x90, 60, 100})})}));
  EXPECT_EQ(file.endTick, 96u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 33: track 1 has no End Of Track; its last event at tick "
                          "96 is taken as its end."));
}

TEST(SmfTolerance, EmptyTrackEndsAtItsStart) {
  const StandardMidiFile file = Parsed(File({Track({kStart}), OpenTrack({})}));
  EXPECT_EQ(file.endTick, 0u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 41: track 2 has no End Of Track; its last event at tick 0 "
                          "is taken as its end."));
}

TEST(SmfTolerance, BytesAfterTheEndOfTrackAreIgnored) {
  const StandardMidiFile file = Parsed(File({OpenTrack({kStart, {0, 0xFF, 0x2F, 0}, Tempo(5, 1)})}));
  EXPECT_EQ(file.tempos.size(), 1u);
  EXPECT_EQ(file.endTick, 0u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 33: 7 bytes after the End Of Track of track 1; they are ignored."));
}

TEST(SmfTolerance, EndOfTrackWithBytesOfItsOwn) {
  const StandardMidiFile file = Parsed(File({OpenTrack({kStart, Meta(3, 0x2F, {1, 2})})}));
  EXPECT_EQ(file.endTick, 3u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 30: an End Of Track with 2 bytes; they are ignored."));
}

TEST(SmfTolerance, RunningStatusAfterMetaEventOrSysExIsToldOnce) {
  const StandardMidiFile file = ParsedTrack(
      {Event(0, {0x90, 60, 100}), kStart, Event(1, {60, 0}), Event(1, {0xF0, 1, 0xF7}), Event(1, {62, 9})});
  EXPECT_EQ(file.endTick, 3u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 34: track 1 leaves out a status byte after a meta event "
                          "or SysEx; the last status is taken to hold."));
}

TEST(SmfTolerance, RunningStatusAfterSysExIsToldToo) {
  EXPECT_THAT(
      ParsedTrack({kStart, Event(0, {0xC0, 1}), Event(0, {0xF0, 1, 0xF7}), Event(1, {2})}).warnings,
      ElementsAre("song.mid: byte 37: track 1 leaves out a status byte after a meta event or SysEx; the "
                  "last status is taken to hold."));
}

TEST(SmfTolerance, ANewStatusAfterAMetaEventIsNothingOdd) {
  EXPECT_THAT(
      ParsedTrack({Event(0, {0x90, 60, 100}), kStart, Event(1, {0x90, 60, 0}), Event(1, {60, 9})}).warnings,
      IsEmpty());
}

TEST(SmfTolerance, HeaderPromisesMoreTracksThanThereAre) {
  const StandardMidiFile file = Parsed(Joined({Header(1, 65'535, 480), Track({kStart})}));
  EXPECT_EQ(file.tempos.size(), 1u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 10: the header promises 65535 tracks, the file has 1; "
                          "those that are there are read."));
}

TEST(SmfTolerance, HeaderPromisesFewerTracksThanThereAre) {
  const StandardMidiFile file = Parsed(Joined({Header(1, 0, 480), Track({kStart}), Track({Tempo(9, 1)})}));
  EXPECT_EQ(file.tempos.size(), 2u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 10: the header promises 0 tracks, the file has 2; those "
                          "that are there are read."));
}

TEST(SmfTolerance, TypeZeroWithTwoTracks) {
  const StandardMidiFile file = Parsed(Joined({Header(0, 2, 480), Track({kStart}), Track({Tempo(9, 1)})}));
  EXPECT_EQ(file.tempos.size(), 2u);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 10: a file of type 0 with 2 tracks where one belongs; all "
                          "are read."));
}

TEST(SmfTolerance, BytesBehindTheLastTrackThatAreNoChunk) {
  const Bytes file = File({Track({kStart})});
  EXPECT_THAT(Parsed(Joined({file, {1, 2, 3, 4, 5, 6, 7}})).warnings,
              ElementsAre("song.mid: byte 33: 7 bytes behind the last track; they are ignored."));
  EXPECT_THAT(Parsed(Joined({file, {'d', 'o', 'w', 'n', 'l', 'o', 'a', 'd', 'e', 'd'}})).warnings,
              ElementsAre("song.mid: byte 33: 10 bytes behind the last track; they are ignored."));
}

TEST(SmfTolerance, LateFirstTempo) {
  EXPECT_THAT(
      ParsedTrack({Tempo(96, 400'000)}).warnings,
      ElementsAre("song.mid: byte 0: no tempo at tick 0; 120 quarter notes per minute hold until the first "
                  "one at tick 96."));
}

TEST(SmfTolerance, NoTempoAtAll) {
  EXPECT_THAT(ParsedTrack({}).warnings,
              ElementsAre("song.mid: byte 0: no tempo at tick 0; 120 quarter notes per "
                          "minute hold throughout."));
}

TEST(SmfTolerance, LongerEventsThanTodays) {
  const StandardMidiFile file =
      ParsedTrack({Meta(0, 0x51, {0, 0, 5, 9}), Meta(0, 0x58, {3, 2, 24, 8, 1}), Meta(0, 0x59, {1, 0, 9})});
  EXPECT_EQ(file.tempos.at(0).microsecondsPerQuarter, 5u);
  EXPECT_EQ(file.meters.at(0).numerator, 3u);
  EXPECT_EQ(file.keys.at(0).sharps, 1);
  EXPECT_THAT(file.warnings,
              ElementsAre("song.mid: byte 23: a tempo of 4 bytes where 3 belong; the others are ignored.",
                          "song.mid: byte 31: a meter of 5 bytes where 4 belong; the others are ignored.",
                          "song.mid: byte 40: a key of 3 bytes where 2 belong; the others are ignored."));
}

TEST(SmfTolerance, KeyThatCannotBeIsLeftOut) {
  const StandardMidiFile file =
      ParsedTrack({kStart, Meta(0, 0x59, {8, 0}), Meta(0, 0x59, {0xF8, 0}), Meta(0, 0x59, {0, 2})});
  EXPECT_TRUE(file.keys.empty());
  EXPECT_THAT(file.warnings, ElementsAre("song.mid: byte 30: a key of 8 sharps in mode 0; it is ignored.",
                                         "song.mid: byte 36: a key of -8 sharps in mode 0; it is ignored.",
                                         "song.mid: byte 42: a key of 0 sharps in mode 2; it is ignored."));
}

TEST(SmfTolerance, WarningsBeyondFiftyAreCounted) {
  const StandardMidiFile file = Parsed(
      File({Chunk("MTrk", Joined({kStart, Repeated(Meta(0, 0x59, {8, 0}), 70), {0, 0xFF, 0x2F, 0}}))}));
  ASSERT_EQ(file.warnings.size(), 51u);
  EXPECT_EQ(file.warnings.back(), "song.mid: 20 more warnings left out.");
}

}  // namespace
