#include "reference_suite/midi/standard_midi_file/smf_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"

namespace {

using namespace midi_bytes;
using tesk_midi::SmfWriter;

std::string InvalidArgument(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "accepted";
}

TEST(SmfWriter, WritesTheBytesOfTheFormat) {
  SmfWriter writer(96, "T");
  writer.Tempo(0, 500'000);
  writer.Meter(0, 6, 8);
  writer.Key(0, -2, true);
  writer.Marker(200, "M");
  const std::size_t part = writer.AddPart("P");
  writer.Program(part, 0, 2, 33);
  writer.Note(part, 0, 96, 2, 60, 100);
  writer.End(384);
  const Bytes expected =
      Joined({Header(1, 2, 96),
              Chunk("MTrk", Joined({Meta(0, 0x03, {'T'}), Meta(0, 0x51, {0x07, 0xA1, 0x20}),
                                    Meta(0, 0x58, {6, 3, 24, 8}), Meta(0, 0x59, {0xFE, 1}), Bytes{0x81},
                                    Meta(0x48, 0x06, {'M'}), Bytes{0x81}, Meta(0x38, 0x2F, {})})),
              Chunk("MTrk", Joined({Meta(0, 0x03, {'P'}), Event(0, {0xC2, 33}), Event(0, {0x92, 60, 100}),
                                    Event(96, {60, 0}), Bytes{0x82}, Meta(0x20, 0x2F, {})}))});
  EXPECT_EQ(writer.Bytes(), expected);
}

TEST(SmfWriter, WhatItWritesIsReadBack) {
  SmfWriter writer(960, "Song");
  writer.Tempo(1920, 16'777'215);
  writer.Tempo(0, 1);
  writer.Meter(0, 255, 64);
  writer.Key(0, 7, false);
  writer.Key(0x0FFFFFFF, -7, true);
  writer.Marker(5, std::string(300, 'x'));
  const std::size_t part = writer.AddPart("");
  writer.Note(part, 0, 200'000, 15, 127, 127);
  writer.Note(part, 100, 16'384, 0, 0, 1);
  const auto file = tesk_midi::ParseSmf(writer.Bytes(), "written");
  EXPECT_EQ(file.format, 1u);
  EXPECT_EQ(file.division, 960u);
  ASSERT_EQ(file.tempos.size(), 2u);
  EXPECT_EQ(file.tempos[0].microsecondsPerQuarter, 1u);
  EXPECT_EQ(file.tempos[1].microsecondsPerQuarter, 16'777'215u);
  ASSERT_EQ(file.meters.size(), 1u);
  EXPECT_EQ(file.meters[0].denominator, 64u);
  ASSERT_EQ(file.keys.size(), 2u);
  EXPECT_EQ(file.keys[1].tick, 0x0FFFFFFFu);
  EXPECT_EQ(file.keys[1].sharps, -7);
  EXPECT_EQ(file.markers.at(0).name, std::string(300, 'x'));
  EXPECT_EQ(file.endTick, 0x0FFFFFFFu);
  EXPECT_TRUE(file.warnings.empty());
}

TEST(SmfWriter, ARepeatedNoteEndsBeforeItBeginsAgain) {
  SmfWriter writer(96);
  const std::size_t part = writer.AddPart("");
  writer.Note(part, 10, 10, 0, 60, 100);
  writer.Note(part, 0, 10, 0, 60, 90);
  const Bytes events =
      Joined({Event(0, {0x90, 60, 90}), Event(10, {60, 0}), Event(0, {60, 100}), Event(10, {60, 0})});
  EXPECT_EQ(writer.Bytes(), Joined({Header(1, 2, 96), Track({}), Track({events})}));
}

TEST(SmfWriter, StatusIsWrittenAgainWhenTheChannelChanges) {
  SmfWriter writer(96);
  const std::size_t part = writer.AddPart("");
  writer.Program(part, 0, 0, 1);
  writer.Program(part, 1, 1, 1);
  EXPECT_EQ(writer.Bytes(),
            Joined({Header(1, 2, 96), Track({}), Track({Event(0, {0xC0, 1}), Event(1, {0xC1, 1})})}));
}

TEST(SmfWriter, RefusesWhatTheFormatCannotHold) {
  SmfWriter writer(96);
  const std::size_t part = writer.AddPart("");
  const char division[] = "SmfWriter: a division is 1 to 32,767";
  EXPECT_EQ(InvalidArgument([] { SmfWriter(0); }), division);
  EXPECT_EQ(InvalidArgument([] { SmfWriter(32'768); }), division);
  const char tempo[] = "SmfWriter: a tempo is 1 to 16,777,215 microseconds per quarter note";
  EXPECT_EQ(InvalidArgument([&] { writer.Tempo(0, 0); }), tempo);
  EXPECT_EQ(InvalidArgument([&] { writer.Tempo(0, 16'777'216); }), tempo);
  const char meter[] = "SmfWriter: the numerator of a meter is 1 to 255";
  EXPECT_EQ(InvalidArgument([&] { writer.Meter(0, 0, 4); }), meter);
  EXPECT_EQ(InvalidArgument([&] { writer.Meter(0, 256, 4); }), meter);
  EXPECT_EQ(InvalidArgument([&] { writer.Meter(0, 4, 3); }),
            "SmfWriter: the denominator of a meter is 1, 2, 4, 8, 16, 32 or 64");
  const char key[] = "SmfWriter: a key has up to 7 sharps or flats";
  EXPECT_EQ(InvalidArgument([&] { writer.Key(0, 8, false); }), key);
  EXPECT_EQ(InvalidArgument([&] { writer.Key(0, -8, false); }), key);
  const char program[] = "SmfWriter: a channel is 0 to 15, a program 0 to 127";
  EXPECT_EQ(InvalidArgument([&] { writer.Program(part, 0, 16, 0); }), program);
  EXPECT_EQ(InvalidArgument([&] { writer.Program(part, 0, 0, 128); }), program);
  const char note[] = "SmfWriter: a channel is 0 to 15, a key 0 to 127";
  EXPECT_EQ(InvalidArgument([&] { writer.Note(part, 0, 1, 16, 60, 1); }), note);
  EXPECT_EQ(InvalidArgument([&] { writer.Note(part, 0, 1, 0, 128, 1); }), note);
  const char velocity[] = "SmfWriter: a velocity is 1 to 127";
  EXPECT_EQ(InvalidArgument([&] { writer.Note(part, 0, 1, 0, 60, 0); }), velocity);
  EXPECT_EQ(InvalidArgument([&] { writer.Note(part, 0, 1, 0, 60, 128); }), velocity);
  EXPECT_EQ(InvalidArgument([&] { writer.Note(part, 0, 0, 0, 60, 1); }),
            "SmfWriter: a note lasts at least one tick");
  EXPECT_THROW(writer.Program(2, 0, 0, 0), std::out_of_range);
}

TEST(SmfWriter, RefusesAGapThatNoQuantityHolds) {
  SmfWriter writer(96);
  writer.Marker(0x10000000, "late");
  EXPECT_EQ(InvalidArgument([&] { writer.Bytes(); }),
            "SmfWriter: more than 268,435,455 ticks or bytes between two events");
}

}  // namespace
