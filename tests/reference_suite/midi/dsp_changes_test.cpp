#include "reference_suite/midi/dsp_changes.h"

#include <gtest/gtest.h>

#include <limits>

#include "suite/midi/song_log.h"

namespace {

constexpr unsigned kNever = std::numeric_limits<unsigned>::max();

TEST(DspChanges, EmptyLogNeverChanges) {
  for (const DspChanges& changes : {DspChanges(), DspChanges(CL::SongLog())}) {
    EXPECT_EQ(changes.At(0).scale, 1.0);
    EXPECT_EQ(changes.At(kNever).semitones, 0);
    EXPECT_EQ(changes.NextAfter(0), kNever);
  }
}

TEST(DspChanges, EachValueHoldsFromItsTickOn) {
  CL::SongLog log;
  log.tempoScales.Add(CL::TempoScale(960, 0.5, 1));
  log.transposes.Add(CL::Transpose(1920, -2, 2));
  const DspChanges changes(log);
  EXPECT_EQ(changes.At(959).scale, 1.0);
  EXPECT_EQ(changes.At(960).scale, 0.5);
  EXPECT_EQ(changes.At(1919).semitones, 0);
  EXPECT_EQ(changes.At(1920).semitones, -2);
  EXPECT_EQ(changes.At(1920).scale, 0.5);
  EXPECT_EQ(changes.NextAfter(0), 960u);
  EXPECT_EQ(changes.NextAfter(959), 960u);
  EXPECT_EQ(changes.NextAfter(960), 1920u) << "strictly after";
  EXPECT_EQ(changes.NextAfter(1920), kNever);
}

TEST(DspChanges, BothAtOneTickAreOneChange) {
  CL::SongLog log;
  log.tempoScales.Add(CL::TempoScale(960, 0.5, 1));
  log.transposes.Add(CL::Transpose(960, 3, 2));
  const DspChanges changes(log);
  EXPECT_EQ(changes.At(960).scale, 0.5);
  EXPECT_EQ(changes.At(960).semitones, 3);
  EXPECT_EQ(changes.NextAfter(960), kNever);
}

TEST(DspChanges, EventThatRepeatsTheValueIsNoChange) {
  CL::SongLog log;
  log.tempoScales.Add(CL::TempoScale(480, 1.0, 1));
  log.tempoScales.Add(CL::TempoScale(960, 0.5, 2));
  log.tempoScales.Add(CL::TempoScale(1440, 0.5, 3));
  log.transposes.Add(CL::Transpose(1440, 0, 4));
  log.transposes.Add(CL::Transpose(1920, 1, 5));
  const DspChanges changes(log);
  EXPECT_EQ(changes.NextAfter(0), 960u);
  EXPECT_EQ(changes.NextAfter(960), 1920u);
}

TEST(DspChanges, EventAtTickZeroHoldsFromTheBeginning) {
  CL::SongLog log;
  log.tempoScales.Add(CL::TempoScale(0, 2.0, 1));
  const DspChanges changes(log);
  EXPECT_EQ(changes.At(0).scale, 2.0);
  EXPECT_EQ(changes.NextAfter(0), kNever);
}

TEST(DspChanges, OfTwoEventsAtOneTickTheLaterHolds) {
  CL::SongLog log;
  log.tempoScales.Add(CL::TempoScale(960, 0.5, 1));
  log.tempoScales.Add(CL::TempoScale(960, 0.75, 2));
  EXPECT_EQ(DspChanges(log).At(960).scale, 0.75);
}

}  // namespace
