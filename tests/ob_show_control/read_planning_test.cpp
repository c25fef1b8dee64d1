#include <gtest/gtest.h>

#include <stdexcept>

#include "exc/assertion/ex_assertion_error.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/fakes/scripted_how_to_play.h"
#include "tests/ob_show_control/control_fixture.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

// Reads that meet nothing, and the cuts that need no control event. A tick is 24 samples.

namespace {

using fakes::TakeJournal;
using test_support::CoutCapture;
using test_support::Journal;

constexpr char kAlignmentWarning[] = "WARNING: sample index reset to align with MIDI ticks.\n";

class ReadPlanning : public test_support::ControlTest {};

// ---- reads inside a tick -------------------------------------------------------------------------------

TEST_F(ReadPlanning, ARequestOf0ThrowsBeforeAnythingChanges) {
  Place(3, 5);
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { Plan(0); }, test_support::Failed("requestedSampleCount.GetUnscaled() != 0", 108)));
  EXPECT_EQ(control->GetSampleIndex(), 77);
  EXPECT_EQ(control->GetTickIndex(), 3u);
  EXPECT_EQ(TakeJournal(), Journal());
  EXPECT_TRUE(LocksAreFree());
}

TEST_F(ReadPlanning, ARequestThatStaysInsideTheTickComesBackUnchanged) {
  Place(3, 5);
  const auto count = control->GetNextReadSampleCount(tesk_audio::SampleCount(18, 1.5L));
  EXPECT_EQ(count.GetUnscaled(), 18);
  EXPECT_EQ(count.GetScale(), 1.5L);
  EXPECT_EQ(TakeJournal(), Journal()) << "no events are processed";
  EXPECT_EQ(Registrations(), Journal());
  EXPECT_EQ(control->GetTickIndex(), 3u);
  EXPECT_EQ(control->GetSampleIndex(), 77) << "planning alone reads nothing";
}

TEST_F(ReadPlanning, OneSampleMoreCrossesTheTick) {
  Place(3, 5);
  EXPECT_EQ(Plan(19), 19);
  EXPECT_EQ(TakeJournal(),
            (Journal{"base.ProcessLoopEventsAtCurrentTickIndex", "base.FindNextControlEventOnAdvance 3 4",
                     "stream.AdvanceToTickIndex 4"}));
}

// ---- the control stream --------------------------------------------------------------------------------

TEST_F(ReadPlanning, TheControlStreamMustStandAtTheControlPosition) {
  Place(3);
  fakes::how_to_play::GetScript().tick = 4;
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { Plan(5); }, test_support::Failed("this->tickIndex_ == controlStreamTickIndex", 121)));
}

TEST_F(ReadPlanning, AtTheEndOfTheMidiTheControlStreamIsStillChecked) {
  Load({.midiEnd = 10, .audioEnd = 20});
  Place(10);
  fakes::how_to_play::GetScript().tick = 9;
  EXPECT_THROW(Plan(5), exc::ExAssertionError);
}

TEST_F(ReadPlanning, PastTheEndOfTheMidiTheControlStreamMayStandAnywhere) {
  Load({.midiEnd = 10, .audioEnd = 20});
  Place(11);
  fakes::how_to_play::GetScript().tick = 10;
  EXPECT_EQ(Plan(5), 5);
}

TEST_F(ReadPlanning, TheControlStreamIsCheckedBeforeTheAudioCatchesUp) {
  control->PlaceTick(10);
  fakes::how_to_play::GetScript().tick = 9;
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { Plan(5); }, test_support::Failed("this->tickIndex_ == controlStreamTickIndex", 121)));
}

// Before the audio no sample has a tick; that is found first.
TEST_F(ReadPlanning, TheSamplesTickIsFoundBeforeTheControlStreamIsChecked) {
  control->AddToSampleIndex(-1);
  fakes::how_to_play::GetScript().tick = 9;
  EXPECT_TRUE(
      test_support::ThrowsWithText<std::logic_error>([&] { Plan(5); }, "found this->tempoEvents_.begin()"));
}

// ---- the audio lags behind the control position --------------------------------------------------------

TEST_F(ReadPlanning, AudioThatLagsBehindCatchesUpToTheControlPosition) {
  control->PlaceTick(10);
  EXPECT_EQ(Plan(1000), 240);
  EXPECT_EQ(control->GetTickIndex(), 10u);
  EXPECT_EQ(TakeJournal(), Journal()) << "no events are processed";
  EXPECT_EQ(Registrations(), Journal());
}

TEST_F(ReadPlanning, CatchingUpGoesNoFurtherThanTheRequest) {
  control->PlaceTick(10);
  EXPECT_EQ(Plan(240), 240);
  EXPECT_EQ(Plan(239), 239);
  EXPECT_EQ(Read(100), 100);
  EXPECT_EQ(Plan(1000), 140);
}

TEST_F(ReadPlanning, CatchingUpStartsInsideATick) {
  Place(2, 7);
  control->PlaceTick(4);
  EXPECT_EQ(Plan(1000), 41);
}

TEST_F(ReadPlanning, ACatchUpNeverGrowsTheScaledView) {
  control->PlaceTick(1);
  const auto count = control->GetNextReadSampleCount(tesk_audio::SampleCount(1000, 1.5L));
  EXPECT_EQ(count.GetUnscaled(), 24);
  EXPECT_EQ(count.GetScaled(), 16);
  // 23.75 samples, which are 24: exactly 24 would be 96.
  EXPECT_EQ(PlanScaled(95, 0.25L).GetScaled(), 95);
}

// 24.25 samples, which are 24 and so are cut to exactly 24.
TEST_F(ReadPlanning, ARequestOfJustWhatIsMissingIsCutToo) {
  control->PlaceTick(1);
  const auto count = PlanScaled(97, 0.25L);
  EXPECT_EQ(count.GetUnscaled(), 24);
  EXPECT_EQ(count.GetScaled(), 96);
}

// 200,000,000 ticks are 4,800,000,000 samples: 505,032,704 more than 2^32.
TEST_F(ReadPlanning, TheSamplesToCatchUpAreTakenModulo2To32) {
  Load({.midiEnd = 10, .audioEnd = 200'000'000});
  control->PlaceTick(200'000'000);
  EXPECT_EQ(Plan(1'000'000'000), 505'032'704);
  EXPECT_EQ(Plan(505'032'703), 505'032'703);
}

TEST_F(ReadPlanning, WhatIsLeftToCatchUpIsWidenedWithoutASign) {
  Load({.midiEnd = 10, .audioEnd = 100'000'000});
  control->PlaceTick(100'000'000);  // 2,400,000,000 samples: negative as a signed 32-bit number
  EXPECT_EQ(Plan(1000), 1000);
  EXPECT_EQ(Plan(3'000'000'000), 2'400'000'000);
}

// 4,000,000,000 ticks of as many samples are more than 63 bits hold, and so count as none.
TEST_F(ReadPlanning, ACatchUpMustLieAhead) {
  converter.SetSampleRate(8e12L);
  control->PlaceTick(4'000'000'000);
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { Plan(10); }, test_support::Failed("desiredSampleIndex > this->sampleIndex_", 135)));
}

// ---- the audio is ahead of the control position --------------------------------------------------------

TEST_F(ReadPlanning, ASampleIndexOneTickAheadIsPulledBackWithAWarning) {
  Place(5, 3);
  control->PlaceTick(4);
  CoutCapture console;
  EXPECT_EQ(Plan(10), 10);
  EXPECT_EQ(console.Text(), kAlignmentWarning);
  EXPECT_EQ(control->GetSampleIndex(), 96);
  EXPECT_EQ(control->GetTickIndex(), 4u);
}

TEST_F(ReadPlanning, AfterAnAlignmentTheTickIsHeardFromItsFirstSample) {
  Place(5, 3);
  control->PlaceTick(4);
  CoutCapture console;
  EXPECT_EQ(Plan(24), 24);
  EXPECT_EQ(console.Text(), kAlignmentWarning);
  EXPECT_EQ(Registrations(), Journal{"0, 4"}) << "the remainder is 0 now";
}

// ---- the end of the song -------------------------------------------------------------------------------

TEST_F(ReadPlanning, ARequestPastTheEndIsCutToEndOnItsFirstSample) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(90);
  EXPECT_EQ(Read(10'000), 240);
  EXPECT_EQ(control->GetTickIndex(), 100u);
  EXPECT_EQ(control->GetSampleIndex(), 2400);
  EXPECT_EQ(TakeJournal(),
            (Journal{"base.ProcessLoopEventsAtCurrentTickIndex", "base.FindNextControlEventOnAdvance 90 100",
                     "stream.AdvanceToTickIndex 100"}));
}

TEST_F(ReadPlanning, AtTheEndNothingIsLeftToRead) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(100);
  CoutCapture console;
  EXPECT_EQ(Plan(512), 0);
  EXPECT_EQ(Plan(512), 0);
  EXPECT_EQ(console.Text(), "");
  EXPECT_EQ(TakeJournal(), Journal());
}

TEST_F(ReadPlanning, ARequestThatEndsOnTheEndTickIsNotCut) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(90);
  EXPECT_EQ(Plan(240), 240);
}

TEST_F(ReadPlanning, TheEndTickItselfIsNotPlayed) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(90);
  EXPECT_EQ(Plan(241), 240);
}

TEST_F(ReadPlanning, ASampleIndexPastTheEndIsClampedWithANotice) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(100, 10);
  CoutCapture console;
  EXPECT_EQ(Plan(5), 0);
  EXPECT_EQ(console.Text(), "NOTICE: this->sampleIndex_ = 2410 is greater than the end of the song = 2400\n");
  EXPECT_EQ(control->GetSampleIndex(), 2400);
}

TEST_F(ReadPlanning, TheEndIsAskedOfTheVirtualOperation) {
  Place(90);
  control->endTick = 95;
  EXPECT_EQ(Plan(10'000), 120);
}

TEST_F(ReadPlanning, ACutToTheEndNeverGrowsTheScaledView) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(99);
  const auto count = control->GetNextReadSampleCount(tesk_audio::SampleCount(10'000, 1.5L));
  EXPECT_EQ(count.GetUnscaled(), 24);
  EXPECT_EQ(count.GetScaled(), 16);
}

TEST_F(ReadPlanning, ARequestThatJustReachesTheEndKeepsItsFraction) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(99, 20);
  fakes::planning::GetScript().found = {{.jumpPending = true, .reachedTick = 2}};
  const auto count = PlanScaled(10, 0.43L);  // 4.3 unscaled samples, of which there are 4
  EXPECT_EQ(count.GetUnscaled(), 4);
  EXPECT_EQ(count.GetScaled(), 10) << "a cut to 4 would give 9";
}

TEST_F(ReadPlanning, ANegativeRequestAtTheEndFails) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(100, 10);
  CoutCapture console;
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { Plan(-3); }, test_support::Failed("neededSamples <= requestedSampleCount.GetUnscaled()", 172)));
  EXPECT_EQ(control->GetSampleIndex(), 2400) << "the clamp stays";
}

// ---- the render path -----------------------------------------------------------------------------------

TEST_F(ReadPlanning, AReadAllocatesOneNodeOfTheRegistryAtMost) {
  fakes::planning::GetScript().writesJournal = false;
  fakes::how_to_play::GetScript().writesJournal = false;
  Place(3);
  {
    test_support::AllocationWatch watch;
    EXPECT_EQ(Read(10), 10);
    EXPECT_EQ(watch.Count(), 0) << "inside a tick";
  }
  test_support::AllocationWatch watch;
  EXPECT_EQ(Read(100), 100);
  EXPECT_EQ(watch.Count(), 1) << "across ticks";
}

}  // namespace
