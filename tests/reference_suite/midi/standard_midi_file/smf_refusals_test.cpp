// Every text with which a file is refused. A track's first byte is byte 22 of these files.

#include <gtest/gtest.h>

#include "reference_suite/midi/standard_midi_file/smf_limits.h"
#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"

namespace {

using namespace midi_bytes;

TEST(SmfRefusals, EmptyFile) {
  EXPECT_EQ(Refusal({}),
            "song.mid: byte 0: an empty file; export it as a Standard MIDI File of type 0 or 1.");
}

TEST(SmfRefusals, NoMidiFile) {
  EXPECT_EQ(Refusal({'O', 'g', 'g', 'S', 0, 2}),
            "song.mid: byte 0: bytes 4F676753 where a MIDI file has 4D546864 (MThd); export it as a Standard "
            "MIDI File of type 0 or 1.");
}

TEST(SmfRefusals, RiffContainer) {
  EXPECT_EQ(
      Refusal(Joined({Bytes{'R', 'I', 'F', 'F'}, Number(100, 4), Bytes{'R', 'M', 'I', 'D'}})),
      "song.mid: byte 0: a RIFF container (RMID) around the MIDI data; export it as a Standard MIDI File "
      "of type 0 or 1.");
}

TEST(SmfRefusals, RiffFileThatIsNoContainerOfMidi) {
  const char* const words =
      "song.mid: byte 0: a RIFF file, such as WAV, and no MIDI; put the song's MIDI file there.";
  EXPECT_EQ(Refusal(Joined({Bytes{'R', 'I', 'F', 'F'}, Number(100, 4), Bytes{'W', 'A', 'V', 'E'}})), words);
  EXPECT_EQ(Refusal(Joined({Bytes{'R', 'I', 'F', 'F'}, Number(100, 4), Bytes{'R', 'M', 'I'}})), words);
  EXPECT_EQ(Refusal({'R', 'I', 'F', 'F'}), words);
}

TEST(SmfRefusals, TypeCutOff) {
  EXPECT_EQ(
      Refusal({'M', 'T', 'h'}),
      "song.mid: byte 0: the file's type is cut off (bytes needed: 4, left in the file: 3); the file is "
      "damaged or cut off, export it again.");
}

TEST(SmfRefusals, HeaderTooShort) {
  EXPECT_EQ(
      Refusal(Chunk("MThd", {0, 1, 0, 1, 1})),
      "song.mid: byte 4: a header of 5 bytes where the file has 5 left and a header at least 6; the file "
      "is damaged or cut off, export it again.");
}

TEST(SmfRefusals, HeaderRunsPastTheFile) {
  EXPECT_EQ(
      Refusal(Joined({Bytes{'M', 'T', 'h', 'd'}, Number(0xFFFFFFFF, 4), Bytes(6)})),
      "song.mid: byte 4: a header of 4294967295 bytes where the file has 6 left and a header at least 6; "
      "the file is damaged or cut off, export it again.");
}

TEST(SmfRefusals, TypeTwo) {
  EXPECT_EQ(Refusal(Joined({Header(2, 1, 480), Track({})})),
            "song.mid: byte 8: a MIDI file of type 2; export it as a Standard MIDI File of type 0 or 1.");
}

TEST(SmfRefusals, SmpteDivision) {
  EXPECT_EQ(Refusal(Joined({Header(1, 1, 0xE728), Track({})})),
            "song.mid: byte 12: an SMPTE division E728 (25 frames per second, 40 ticks per frame); export it "
            "with ticks per quarter note.");
}

TEST(SmfRefusals, DivisionZero) {
  EXPECT_EQ(
      Refusal(Joined({Header(1, 1, 0), Track({})})),
      "song.mid: byte 12: a division of 0 ticks per quarter note; export it again, with 480 for instance.");
}

TEST(SmfRefusals, NoTrack) {
  EXPECT_EQ(Refusal(Joined({Header(1, 1, 480), Chunk("XFIH", {})})),
            "song.mid: byte 22: no track; the file is damaged or cut off, export it again.");
}

TEST(SmfRefusals, TrackRunsPastTheFile) {
  EXPECT_EQ(
      Refusal(Joined({Header(1, 1, 480), Bytes{'M', 'T', 'r', 'k'}, Number(0xFFFFFFF0, 4), Bytes(10)})),
      "song.mid: byte 14: track 1 of 4294967280 bytes where the file has 10 left; the file is damaged or "
      "cut off, export it again.");
}

TEST(SmfRefusals, UnknownChunkRunsPastTheFileWhileTracksAreMissing) {
  EXPECT_EQ(
      Refusal(Joined({Header(1, 2, 480), Track({}), Bytes{'X', 'F', 'I', 'H'}, Number(5, 4), Bytes(4)})),
      "song.mid: byte 26: a chunk of 5 bytes where the file has 4 left; the file is damaged or cut off, "
      "export it again.");
}

TEST(SmfRefusals, ATrackCutOffIsRefusedAlsoBehindThePromisedTracks) {
  EXPECT_EQ(
      Refusal(Joined({Header(1, 1, 480), Track({}), Bytes{'M', 'T', 'r', 'k'}, Number(5, 4), Bytes(4)})),
      "song.mid: byte 26: track 2 of 5 bytes where the file has 4 left; the file is damaged or cut off, "
      "export it again.");
}

TEST(SmfRefusals, ChunkHeadCutOffWhileTracksAreMissing) {
  EXPECT_EQ(Refusal(Joined({Header(1, 2, 480), Track({}), Bytes{'M', 'T', 'r', 'k', 0, 0}})),
            "song.mid: byte 30: the length of a chunk is cut off (bytes needed: 4, left in the file: 2); the "
            "file is damaged or cut off, export it again.");
}

TEST(SmfRefusals, MoreThan256Tracks) {
  EXPECT_EQ(Refusal(Joined({Header(1, 257, 480), Repeated(Track({}), 257)})),
            "song.mid: byte 3086: more than 256 tracks; merge tracks, or export as type 0.");
}

TEST(SmfRefusals, QuantityOfMoreThanFourBytes) {
  EXPECT_EQ(
      RefusalOfTrack({{0x8F, 0xFF, 0xFF, 0xFF, 0x7F}}),
      "song.mid: byte 22: a delta time of more than four bytes; the file is damaged or cut off, export it "
      "again.");
}

TEST(SmfRefusals, DeltaTimeCutOff) {
  EXPECT_EQ(Refusal(File({OpenTrack({{0x81}})})),
            "song.mid: byte 22: a delta time is cut off (bytes needed: 1, left in track 1: 0); the file is "
            "damaged or cut off, export it again.");
}

TEST(SmfRefusals, EventCutOffAfterItsDeltaTime) {
  EXPECT_EQ(
      Refusal(File({OpenTrack({{0x00}})})),
      "song.mid: byte 23: an event is cut off (bytes needed: 1, left in track 1: 0); the file is damaged "
      "or cut off, export it again.");
}

TEST(SmfRefusals, ChannelMessageCutOff) {
  EXPECT_EQ(
      Refusal(File({OpenTrack({Event(0, {0x90, 60})})})),
      "song.mid: byte 25: a channel message is cut off (bytes needed: 1, left in track 1: 0); the file is "
      "damaged or cut off, export it again.");
}

TEST(SmfRefusals, DataByteWithoutStatus) {
  EXPECT_EQ(RefusalOfTrack({Event(0, {60, 100})}),
            "song.mid: byte 23: a data byte without a status byte in track 1; the file is damaged, export it "
            "again.");
}

TEST(SmfRefusals, StatusByteAsFirstOrSecondData) {
  const char text[] =
      "song.mid: byte 23: a status byte inside a channel message in track 1; the file is damaged, export it "
      "again.";
  EXPECT_EQ(RefusalOfTrack({Event(0, {0x90, 0x80, 0x00})}), text);
  EXPECT_EQ(RefusalOfTrack({Event(0, {0x90, 0x00, 0xFF})}), text);
  EXPECT_EQ(RefusalOfTrack({Event(0, {0xC0, 0xFF})}), text);
}

TEST(SmfRefusals, SystemMessagesThatHaveNoPlaceInAFile) {
  for (const int status : {0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF8, 0xFA, 0xFB, 0xFC, 0xFE}) {
    EXPECT_NE(RefusalOfTrack({Event(0, {static_cast<std::uint8_t>(status)})})
                  .find("in track 1; such messages have no place in a file, export it again."),
              std::string::npos);
  }
  EXPECT_EQ(RefusalOfTrack({Event(0, {0xF8})}),
            "song.mid: byte 23: status byte F8 in track 1; such messages have no place in a file, export it "
            "again.");
}

TEST(SmfRefusals, SysExRunsPastItsTrack) {
  EXPECT_EQ(
      RefusalOfTrack({Event(0, {0xF0, 0xFF, 0xFF, 0xFF, 0x7F})}),
      "song.mid: byte 28: a SysEx is cut off (bytes needed: 268435455, left in track 1: 4); the file is "
      "damaged or cut off, export it again.");
}

TEST(SmfRefusals, MetaEventRunsPastItsTrack) {
  EXPECT_EQ(
      RefusalOfTrack({Event(0, {0xFF, 0x01, 0xFF, 0xFF, 0xFF, 0x7F})}),
      "song.mid: byte 29: a meta event is cut off (bytes needed: 268435455, left in track 1: 4); the file "
      "is damaged or cut off, export it again.");
}

TEST(SmfRefusals, TempoZero) {
  EXPECT_EQ(RefusalOfTrack({Tempo(0, 500'000), Tempo(96, 0)}),
            "song.mid: byte 30: a tempo of 0 microseconds per quarter note; correct the tempo at tick 96.");
}

TEST(SmfRefusals, EventsThatAreTooShort) {
  EXPECT_EQ(RefusalOfTrack({Meta(0, 0x51, {7, 161})}),
            "song.mid: byte 23: a tempo of 2 bytes where 3 belong; the file is damaged, export it again.");
  EXPECT_EQ(RefusalOfTrack({Meta(0, 0x58, {4, 2, 24})}),
            "song.mid: byte 23: a meter of 3 bytes where 4 belong; the file is damaged, export it again.");
  EXPECT_EQ(RefusalOfTrack({Meta(0, 0x59, {0})}),
            "song.mid: byte 23: a key of 1 bytes where 2 belong; the file is damaged, export it again.");
}

TEST(SmfRefusals, MeterThatCannotBe) {
  EXPECT_EQ(RefusalOfTrack({Meta(5, 0x58, {0, 2, 24, 8})}),
            "song.mid: byte 23: a meter of 0 over 2 to the power of 2; correct the meter at tick 5 (1 to 255 "
            "over at most 64).");
  EXPECT_EQ(RefusalOfTrack({Meta(0, 0x58, {4, 7, 24, 8})}),
            "song.mid: byte 23: a meter of 4 over 2 to the power of 7; correct the meter at tick 0 (1 to 255 "
            "over at most 64).");
}

TEST(SmfRefusals, TicksPastThirtyTwoBits) {
  const Bytes longest{0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0x01, 0x00};  // 268,435,455 ticks, then an empty text
  const Bytes fifteen = Repeated(longest, 16);                    // 4,294,967,280
  EXPECT_EQ(Parsed(File({Track({fifteen, Meta(15, 0x01, {})})})).endTick, 4'294'967'295u);
  EXPECT_EQ(RefusalOfTrack({fifteen, Meta(16, 0x01, {})}),
            "song.mid: byte 134: track 1 runs past tick 4294967295; the file is damaged, export it again.");
}

TEST(SmfRefusals, MoreThanSixteenMebibytes) {
  Bytes file = Joined({Header(1, 1, 480), Track({})});
  file.resize(tesk_midi::kMaxSmfBytes);
  EXPECT_EQ(Parsed(file).endTick, 0u);  // the zeros behind the track are chunks of no length
  file.push_back(0);
  EXPECT_EQ(
      Refusal(file),
      "song.mid: byte 16777216: more than 16777216 bytes; leave out what the show does not need, such as "
      "notes and SysEx.");
}

TEST(SmfRefusals, MoreThanAMillionEvents) {
  const auto fileWithEvents = [](std::size_t count) {
    const Bytes first = Event(0, {0xD0, 1});
    return File({Chunk("MTrk", Joined({first, Repeated({0, 1}, count - 2), {0, 0xFF, 0x2F, 0}}))});
  };
  EXPECT_EQ(Refusal(fileWithEvents(1'000'000)), "accepted");
  EXPECT_EQ(
      Refusal(fileWithEvents(1'000'001)),
      "song.mid: byte 2000023: more than 1000000 events; leave out what the show does not need, such as "
      "notes and controllers.");
}

TEST(SmfRefusals, EventsAreCountedOverAllTracks) {
  const Bytes half = Chunk("MTrk", Joined({Event(0, {0xD0, 1}), Repeated({0, 1}, 500'000)}));
  EXPECT_NE(Refusal(File({half, half})).find("more than 1000000 events"), std::string::npos);
}

TEST(SmfRefusals, MoreThan65536Markers) {
  const auto fileWithMarkers = [](std::size_t count) {
    return File({Chunk("MTrk", Joined({Repeated(Meta(1, 0x06, {'m'}), count), {0, 0xFF, 0x2F, 0}}))});
  };
  EXPECT_EQ(Refusal(fileWithMarkers(65'536)), "accepted");
  EXPECT_EQ(Refusal(fileWithMarkers(65'537)),
            "song.mid: byte 327703: more than 65536 markers; leave out those that the show does not need.");
}

}  // namespace
