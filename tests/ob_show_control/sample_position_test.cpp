#include <gtest/gtest.h>

#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/ob_show_control/control_fixture.h"

namespace {

using fakes::TakeJournal;
using test_support::Journal;

class SamplePosition : public test_support::ControlTest {};

// ---- samples that were read ----------------------------------------------------------------------------

TEST_F(SamplePosition, SamplesReadMoveIndexAndCount) {
  Place(5);
  EXPECT_EQ(Plan(100), 100);
  control->AddToSampleIndex(100);
  EXPECT_EQ(control->GetSampleIndex(), 220);
  EXPECT_EQ(control->GetSampleCount(), 100);
}

TEST_F(SamplePosition, AReadAsPlannedNeverSkipsAhead) {
  EXPECT_EQ(Plan(20), 20);  // inside tick 0
  TakeJournal();
  control->AddToSampleIndex(20);
  EXPECT_EQ(TakeJournal(), Journal());
}

TEST_F(SamplePosition, ALessThanPlannedReadNeverSkipsAhead) {
  EXPECT_EQ(Plan(1000), 1000);
  control->PlaceTick(0);  // even where the tick would lie ahead
  TakeJournal();
  control->AddToSampleIndex(999);
  EXPECT_EQ(TakeJournal(), Journal());
  EXPECT_EQ(control->GetTickIndex(), 0u);
}

TEST_F(SamplePosition, AnEqualReadNeverSkipsAhead) {
  EXPECT_EQ(Plan(1000), 1000);
  control->PlaceTick(0);
  TakeJournal();
  control->AddToSampleIndex(1000);
  EXPECT_EQ(TakeJournal(), Journal());
}

TEST_F(SamplePosition, AReadLargerThanPlannedMovesTheControlPositionAlong) {
  EXPECT_EQ(Plan(10), 10);
  TakeJournal();
  control->AddToSampleIndex(100);
  EXPECT_EQ(TakeJournal(), (Journal{"base.DoSkipAhead 4", "stream.AdvanceToTickIndex 4"}));
  EXPECT_EQ(control->GetTickIndex(), 4u);
  EXPECT_EQ(control->GetSampleIndex(), 100);
}

TEST_F(SamplePosition, ALargerReadWithinTheTickSkipsNothing) {
  EXPECT_EQ(Plan(10), 10);
  TakeJournal();
  control->endQueries = 0;
  control->AddToSampleIndex(11);
  EXPECT_EQ(TakeJournal(), Journal());
  EXPECT_EQ(control->endQueries, 0);
}

TEST_F(SamplePosition, TheEndIsAskedForAfterSkippingAhead) {
  EXPECT_EQ(Plan(10), 10);
  control->endQueries = 0;
  control->AddToSampleIndex(100);
  EXPECT_EQ(control->endQueries, 1);
  EXPECT_EQ(control->tickAtEndQuery, 4u);
}

// Whichever way a plan ends, its count is what is expected: the tick is pulled back so that a read of more
// than that would show.
TEST_F(SamplePosition, APlanInsideATickIsWhatIsExpected) {
  Place(1);
  EXPECT_EQ(Plan(20), 20);
  control->PlaceTick(0);
  TakeJournal();
  control->AddToSampleIndex(20);
  EXPECT_EQ(TakeJournal(), Journal());
}

TEST_F(SamplePosition, APlanThatCatchesUpIsWhatIsExpected) {
  control->PlaceTick(10);
  EXPECT_EQ(Plan(1000), 240);
  control->PlaceTick(0);
  TakeJournal();
  control->AddToSampleIndex(240);
  EXPECT_EQ(TakeJournal(), Journal());
}

TEST_F(SamplePosition, APlanThatEndsTheSongIsWhatIsExpected) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  ASSERT_EQ(Plan(1000), 1000);
  Place(100);
  EXPECT_EQ(Plan(1000), 0);
  control->PlaceTick(99);
  TakeJournal();
  control->AddToSampleIndex(1);
  EXPECT_EQ(TakeJournal(), (Journal{"base.DoSkipAhead 100", "stream.AdvanceToTickIndex 100"}));
}

TEST_F(SamplePosition, AfterAJumpOntoACaesuraNoSampleIsExpected) {
  ASSERT_EQ(Plan(1000), 1000);
  Place(20);
  control->AddCaesura(2);
  fakes::planning::GetScript().found = {{.jumpPending = true, .reachedTick = 2}};
  EXPECT_EQ(Plan(1000), 0);
  TakeJournal();
  control->AddToSampleIndex(24);
  EXPECT_EQ(TakeJournal(), (Journal{"base.DoSkipAhead 3", "stream.AdvanceToTickIndex 3"}));
}

TEST_F(SamplePosition, AfterAJumpToTheEndOfTheMidiNoSampleIsExpected) {
  Load({.midiEnd = 500, .audioEnd = 1000});
  ASSERT_EQ(Plan(1000), 1000);
  Place(20);
  fakes::planning::GetScript().found = {{.jumpPending = true, .reachedTick = 500}};
  EXPECT_EQ(Plan(1000), 0);
  TakeJournal();
  control->AddToSampleIndex(24);
  EXPECT_EQ(TakeJournal(), (Journal{"base.DoSkipAhead 501", "stream.AdvanceToTickIndex 501"}));
}

TEST_F(SamplePosition, AfterAStopWasPlannedOneSampleIsTooMany) {
  ASSERT_EQ(Plan(1000), 1000);
  Place(5);
  control->AddCaesura(5);
  fakes::planning::GetScript().found = {{.caesuraStop = true}};
  EXPECT_EQ(Plan(100), 0);
  TakeJournal();
  control->AddToSampleIndex(24);
  EXPECT_EQ(TakeJournal(), (Journal{"base.DoSkipAhead 6", "stream.AdvanceToTickIndex 6"}));
}

// ---- alignment -----------------------------------------------------------------------------------------

struct Alignment {
  long long sample;
  unsigned tick;
  long long aligned;
  const char* why;
};
void PrintTo(const Alignment& row, std::ostream* out) {
  *out << row.sample << " (" << row.why << ")";
}

class AlignmentTable : public test_support::ControlTest, public testing::WithParamInterface<Alignment> {};

TEST_P(AlignmentTable, GoesToATickThatDoesNotBeginBefore) {
  long long sample = GetParam().sample;
  unsigned tick = ~0u;
  control->GetAlignedTickAndSampleIndex(&sample, &tick);
  EXPECT_EQ(tick, GetParam().tick);
  EXPECT_EQ(sample, GetParam().aligned);
}

INSTANTIATE_TEST_SUITE_P(Samples, AlignmentTable,
                         testing::Values(Alignment{0, 0, 0, "the first sample"},
                                         Alignment{24, 1, 24, "on a tick"},
                                         Alignment{25, 2, 48, "rounded down, so one tick on"},
                                         Alignment{36, 2, 48, "half a tick is rounded up"},
                                         Alignment{47, 2, 48, "rounded up"}));

// ---- resets --------------------------------------------------------------------------------------------

TEST_F(SamplePosition, ResettingTheUpdateGeneratorRestartsTheCountAlone) {
  Place(5);
  control->AddToSampleIndex(10);
  control->ResetGuiUpdate();
  EXPECT_EQ(TakeJournal(), Journal{"base.ResetGuiUpdate"});
  EXPECT_EQ(control->GetSampleCount(), 0);
  EXPECT_EQ(control->GetSampleIndex(), 130);
}

TEST_F(SamplePosition, ResettingTheControlVariablesForgetsEverythingPlanned) {
  Place(5);
  fakes::planning::GetScript().cuts[5] = 2;
  ASSERT_TRUE(control->GetJumpIsNext());
  Place(20);
  ASSERT_EQ(Plan(24), 24);
  control->AddToSampleIndex(24);
  control->SkipAheadSamplesOnNextJump(100);
  control->AdjustNextJumpSampleIndex(30);
  ASSERT_NE(control->GetLastJumpSampleIndex(), 0);
  ASSERT_NE(control->GetJumpTargetSampleIndex(), 0);
  TakeJournal();

  control->ResetControlVariables();
  EXPECT_EQ(TakeJournal(), Journal{"base.ResetControlVariables"});
  EXPECT_EQ(control->GetSampleIndex(), 0);
  EXPECT_EQ(control->GetSampleCount(), 0);
  EXPECT_EQ(control->GetLastJumpSampleIndex(), 0);
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 0);

  // The expected count is 0: a read of one tick is more than was planned.
  control->PlaceTick(0);
  control->AddToSampleIndex(24);
  EXPECT_EQ(control->GetTickIndex(), 1u);
  // And neither correction is left for the next jump.
  exc::ScopeLock lock(*control);
  control->SetJump(10, lock, true);
  EXPECT_EQ(control->GetSampleIndex(), 240);
}

TEST_F(SamplePosition, AfterTheControlVariablesNotEvenOneSampleIsExpected) {
  Load({.midiEnd = 1000}, {{0, 20'834}});  // one sample a tick
  control->ResetControlVariables();
  control->AddToSampleIndex(1);
  EXPECT_EQ(control->GetTickIndex(), 1u);
}

}  // namespace
