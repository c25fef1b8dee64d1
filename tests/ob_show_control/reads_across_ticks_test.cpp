#include <gtest/gtest.h>

#include "exc/assertion/ex_assertion_error.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/fakes/scripted_how_to_play.h"
#include "tests/ob_show_control/control_fixture.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

// Reads that cross a tick: every one ends where something takes effect. A tick is 24 samples.

namespace {

using fakes::TakeJournal;
using fakes::planning::Found;
using test_support::CoutCapture;
using test_support::Failed;
using test_support::Journal;

class ReadsAcrossTicks : public test_support::ControlTest {
 protected:
  ReadsAcrossTicks() : script(fakes::planning::GetScript()), stream(fakes::how_to_play::GetScript()) {}

  testing::AssertionResult PlanFails(long long request, const std::string& condition, int line) {
    return test_support::ThrowsWithText<exc::ExAssertionError>([&] { Plan(request); },
                                                               Failed(condition, line));
  }

  fakes::planning::Script& script;
  fakes::how_to_play::Script& stream;
};

LoopEvent Vamp(unsigned from, unsigned to) {
  LoopEvent loop;
  loop.targetTick = from;
  loop.tick = to;
  loop.kind = 64;
  return loop;
}

// ---- a plain advance -----------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, AReadThatMeetsNothingEndsWhereItWasAskedTo) {
  EXPECT_EQ(Read(1000), 1000);
  EXPECT_EQ(control->GetTickIndex(), 41u) << "sample 1000 lies in tick 41";
  EXPECT_EQ(stream.tick, 41u);
  EXPECT_EQ(TakeJournal(),
            (Journal{"base.ProcessLoopEventsAtCurrentTickIndex", "base.FindNextControlEventOnAdvance 0 41",
                     "stream.AdvanceToTickIndex 41"}));
}

TEST_F(ReadsAcrossTicks, AReadEndsOnTheFirstSampleOfTheTickReached) {
  script.found = {{.reachedTick = 12}};
  EXPECT_EQ(Read(1000), 288);
  EXPECT_EQ(control->GetTickIndex(), 12u);
  EXPECT_EQ(converter.SamplesToTicksInteger(control->GetSampleIndex()), 12u);
}

TEST_F(ReadsAcrossTicks, FromInsideATickItIsShorterByWhatWasReadOfIt) {
  Place(5, 10);
  script.found = {{.reachedTick = 12}};
  EXPECT_EQ(Read(1000), 158);
  EXPECT_EQ(control->GetSampleIndex(), 288);
}

TEST_F(ReadsAcrossTicks, AShorterReadHasASmallerScaledView) {
  script.found = {{.reachedTick = 12}};
  const auto count = control->GetNextReadSampleCount(tesk_audio::SampleCount(1000, 1.5L));
  EXPECT_EQ(count.GetUnscaled(), 288);
  EXPECT_EQ(count.GetScaled(), 192);
}

// 999.75 samples, which are 1,000: exactly 1,000 would be 4,000 scaled.
TEST_F(ReadsAcrossTicks, AReadThatIsNotCutDoesNotGrowItsScaledViewEither) {
  const auto count = PlanScaled(3999, 0.25L);
  EXPECT_EQ(count.GetUnscaled(), 1000);
  EXPECT_EQ(count.GetScaled(), 3999);
}

TEST_F(ReadsAcrossTicks, AReadEndsWhereTheDspFactorsChange) {
  stream.nextDspEvent = 7;
  EXPECT_EQ(Read(1000), 168);
  EXPECT_EQ(control->GetTickIndex(), 7u);
  EXPECT_EQ(stream.tick, 7u);
}

TEST_F(ReadsAcrossTicks, TheEarlierOfEventAndDspChangeEndsTheRead) {
  stream.nextDspEvent = 20;
  script.found = {{.reachedTick = 12}};
  EXPECT_EQ(Read(1000), 288);
  EXPECT_EQ(Read(1000), 192) << "up to tick 20";
}

TEST_F(ReadsAcrossTicks, AnAdvanceThatReachesNothingNewReadsUpToTheTickAlone) {
  Place(5);
  script.found = {{.reachedTick = 5}};
  EXPECT_EQ(Read(1000), 0);
  EXPECT_EQ(control->GetTickIndex(), 5u);
}

// ---- the registry --------------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, TheTickIsRegisteredAtTheElapsedCountOfItsFirstSample) {
  Place(5, 10);
  EXPECT_EQ(Read(100), 100);
  EXPECT_EQ(Registrations(), Journal{"-10, 5"}) << "ten samples of it were read before the count began";
  EXPECT_EQ(Read(100), 100);  // from sample 230, 14 samples into tick 9
  EXPECT_EQ(Registrations(), (Journal{"-10, 5", "86, 9"}));
}

TEST_F(ReadsAcrossTicks, AfterAJumpTheTargetIsRegistered) {
  EXPECT_EQ(Read(240), 240);
  script.found = {{.jumpPending = true, .reachedTick = 2}};
  EXPECT_EQ(Read(240), 240);
  EXPECT_EQ(Registrations(), (Journal{"0, 0", "240, 2"}));
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(264), 3u);
}

TEST_F(ReadsAcrossTicks, TheTickIsRegisteredBeforeTheBaseIsAsked) {
  script.onProcessLoopEvents = [&] { EXPECT_EQ(Registrations(), Journal{"0, 0"}); };
  EXPECT_EQ(Plan(100), 100);
}

// ---- loop events ---------------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, AReadGoesNoFurtherThanTheFirstLoopEvent) {
  control->AddLoop(Vamp(5, 20));
  control->AddLoop(Vamp(2, 30));
  EXPECT_EQ(Read(1000), 480);
  EXPECT_EQ(control->GetTickIndex(), 20u);
  EXPECT_EQ(TakeJournal(),
            (Journal{"base.ProcessLoopEventsAtCurrentTickIndex", "base.FindNextControlEventOnAdvance 0 20",
                     "stream.AdvanceToTickIndex 20"}));
}

TEST_F(ReadsAcrossTicks, ALoopEventAtOrPastTheRequestedEndCutsNothing) {
  control->AddLoop(Vamp(5, 20));
  EXPECT_EQ(Plan(481), 481) << "ends inside tick 20";
}

TEST_F(ReadsAcrossTicks, ALoopEventPastTheRequestCutsNothing) {
  control->AddLoop(Vamp(5, 20));
  EXPECT_EQ(Plan(100), 100);
}

TEST_F(ReadsAcrossTicks, CanceledLoopEventsCutNothing) {
  LoopEvent canceled = Vamp(5, 20);
  canceled.canceled = 1;
  control->AddLoop(canceled);
  EXPECT_EQ(Plan(1000), 1000);
  control->AddLoop(Vamp(5, 30));
  Place(0);
  EXPECT_EQ(Plan(1000), 720);
}

TEST_F(ReadsAcrossTicks, TheListIsLookedAtAfterTheLoopEventsWereProcessed) {
  script.onProcessLoopEvents = [&] { control->AddLoop(Vamp(5, 20)); };
  EXPECT_EQ(Plan(1000), 480);
}

// ---- caesuras ------------------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, ACaesuraGivesACountOfExactly0) {
  Place(5);
  control->AddCaesura(5);
  script.found = {{.caesuraStop = true, .reachedTick = 5}};
  const auto count = control->GetNextReadSampleCount(tesk_audio::SampleCount(1000, 1.1L));
  EXPECT_EQ(count.GetUnscaled(), 0);
  EXPECT_EQ(count.GetScaled(), 0);
  EXPECT_EQ(count.GetScale(), 1.1L);
  EXPECT_EQ(control->GetTickIndex(), 5u);
  EXPECT_EQ(control->GetSampleIndex(), 120);
}

TEST_F(ReadsAcrossTicks, ACaesuraInsideTheRequestIsReachedFirst) {
  control->AddCaesura(12);
  script.found = {{.reachedTick = 12}, {.caesuraStop = true, .reachedTick = 12}};
  EXPECT_EQ(Read(1000), 288);
  EXPECT_EQ(Read(1000), 0);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(control->GetSampleIndex()), control->GetSampleIndex());
}

TEST_F(ReadsAcrossTicks, ACaesuraComesBeforeAJumpAndAReplan) {
  Place(5);
  control->AddCaesura(5);
  script.found = {{.caesuraStop = true, .jumpPending = true, .replan = true, .reachedTick = 9}};
  EXPECT_EQ(Plan(1000), 0);
  EXPECT_EQ(control->GetTickIndex(), 5u);
}

// ---- jumps ---------------------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, AJumpIsTakenAndTheReadPlannedFromItsTarget) {
  Place(20);
  script.found = {{.jumpPending = true, .reachedTick = 2}, {.reachedTick = 10}};
  control->jumps = 0;
  EXPECT_EQ(Read(1000), 192);
  EXPECT_EQ(control->jumps, 1) << "the virtual operation";
  EXPECT_EQ(control->GetLastJumpSampleIndex(), 480);
  EXPECT_EQ(control->GetSampleIndex(), 240);
  EXPECT_EQ(TakeJournal(),
            (Journal{"base.ProcessLoopEventsAtCurrentTickIndex", "base.FindNextControlEventOnAdvance 20 61",
                     "base.FindNextControlEventOnSeek 2 0", "base.SetJump 2 1", "stream.Seek 2",
                     "base.ProcessLoopEventsAtCurrentTickIndex", "base.FindNextControlEventOnAdvance 2 43",
                     "stream.AdvanceToTickIndex 10"}));
}

TEST_F(ReadsAcrossTicks, AJumpKeepsTheCutThatTheRequestHasHad) {
  Place(20);
  control->AddLoop(Vamp(2, 22));
  script.found = {{.jumpPending = true, .reachedTick = 2}};
  EXPECT_EQ(Plan(1000), 48) << "two ticks, from the jump's target too";
}

TEST_F(ReadsAcrossTicks, CorrectionsAreAppliedToAJumpWithinARead) {
  Place(20);
  control->SkipAheadSamplesOnNextJump(24);
  script.found = {{.jumpPending = true, .reachedTick = 2}};
  EXPECT_EQ(Plan(240), 240);
  EXPECT_EQ(control->GetSampleIndex(), 72) << "one tick further";
}

TEST_F(ReadsAcrossTicks, AJumpOntoACaesuraGives0) {
  Place(20);
  control->AddCaesura(2);
  script.found = {{.jumpPending = true, .reachedTick = 2}};
  EXPECT_EQ(Plan(1000), 0);
  EXPECT_EQ(control->GetTickIndex(), 2u);
  EXPECT_EQ(control->GetSampleIndex(), 48);
}

TEST_F(ReadsAcrossTicks, AJumpToTheEndOfTheMidiGives0) {
  Place(20);
  script.found = {{.jumpPending = true, .reachedTick = 1000}};
  EXPECT_EQ(Plan(1000), 0);
  EXPECT_EQ(control->GetSampleIndex(), 24'000);
}

TEST_F(ReadsAcrossTicks, AJumpToTheEndOfTheMidiGives0AlsoWhereTheAudioGoesOn) {
  Load({.midiEnd = 500, .audioEnd = 1000});
  Place(20);
  script.found = {{.jumpPending = true, .reachedTick = 500}};
  EXPECT_EQ(Plan(1000), 0);
  EXPECT_EQ(control->GetTickIndex(), 500u);
}

TEST_F(ReadsAcrossTicks, AJumpPastTheEndOfTheMidiGives0) {
  Load({.midiEnd = 500, .audioEnd = 1000});
  Place(20);
  script.found = {{.jumpPending = true, .reachedTick = 501}};
  EXPECT_EQ(Plan(1000), 0);
  EXPECT_EQ(control->GetTickIndex(), 501u);
}

TEST_F(ReadsAcrossTicks, AJumpToJustBeforeTheEndOfTheMidiReadsOn) {
  Place(20);
  script.found = {{.jumpPending = true, .reachedTick = 999}};
  EXPECT_EQ(Plan(1000), 24);
}

// ---- replans -------------------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, AReplanStartsAgainFromThePositionAsItIsNow) {
  script.found = {{.replan = true}, {}};
  script.onFindOnAdvance = [&] {
    if (control->GetTickIndex() == 0) Place(40);  // a listener moved the position
  };
  EXPECT_EQ(Plan(1000), 1000);
  EXPECT_EQ(control->GetTickIndex(), 81u);
}

TEST_F(ReadsAcrossTicks, AReplanKeepsTheCutThatTheRequestHasHad) {
  Place(20);
  control->AddLoop(Vamp(2, 22));
  script.found = {{.replan = true}, {}};
  script.onFindOnAdvance = [&] {
    if (control->GetTickIndex() == 20) Place(2);
  };
  EXPECT_EQ(Plan(1000), 48) << "two ticks, from the new position too";
}

TEST_F(ReadsAcrossTicks, AJumpComesBeforeAReplan) {
  Place(20);
  script.found = {{.jumpPending = true, .replan = true, .reachedTick = 2}};
  EXPECT_EQ(Plan(240), 240);
  EXPECT_EQ(control->GetLastJumpSampleIndex(), 480);
}

TEST_F(ReadsAcrossTicks, AReplanAtTheEndOfTheSongGives0) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  Place(90);
  script.found = {{.replan = true}};
  script.onFindOnAdvance = [&] { Place(100); };
  EXPECT_EQ(Plan(1000), 0) << "the second plan ends the song";
}

// ---- the windows ---------------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, BothLocksAreFreeWhileTheBaseCallsOut) {
  int windows = 0;
  script.onProcessLoopEvents = script.onFindOnAdvance = [&] {
    EXPECT_TRUE(LocksAreFree());
    ++windows;
  };
  EXPECT_EQ(Plan(1000), 1000);
  EXPECT_EQ(windows, 2);
}

TEST_F(ReadsAcrossTicks, BothLocksAreFreeInAReplanToo) {
  script.found = {{.replan = true}, {.jumpPending = true, .reachedTick = 2}, {}};
  int windows = 0;
  script.onProcessLoopEvents = script.onFindOnAdvance = [&] {
    EXPECT_TRUE(LocksAreFree());
    ++windows;
  };
  EXPECT_EQ(Plan(240), 240);
  EXPECT_EQ(windows, 6);
}

TEST_F(ReadsAcrossTicks, BothLocksAreHeldWhileAJumpIsTaken) {
  Place(20);
  script.found = {{.jumpPending = true, .reachedTick = 2}};
  int calls = 0;
  script.onFindOnSeek = script.onSetJump = [&] {
    EXPECT_FALSE(LocksAreFree());
    ++calls;
  };
  EXPECT_EQ(Plan(240), 240);
  EXPECT_EQ(calls, 2);
}

TEST_F(ReadsAcrossTicks, AnErrorInAWindowLeavesTheLocksFree) {
  script.onFindOnAdvance = [] { throw std::runtime_error("a listener"); };
  EXPECT_THROW(Plan(1000), std::runtime_error);
  EXPECT_TRUE(LocksAreFree());
}

// ---- what cannot be ------------------------------------------------------------------------------------

TEST_F(ReadsAcrossTicks, ASongThatEndsBehindThePositionFails) {
  Place(100);
  control->endTick = 50;
  CoutCapture console;
  EXPECT_TRUE(PlanFails(1000, "requestedEndTickIndex > this->tickIndex_", 186));
  EXPECT_EQ(Registrations(), Journal());
  EXPECT_EQ(control->GetSampleIndex(), 1200) << "the clamp is not taken back";
  EXPECT_TRUE(LocksAreFree());
}

// Before the audio start no tick has samples, so that the end may lie ahead in ticks and not in samples.
TEST_F(ReadsAcrossTicks, ARequestThatWasCutTo0FailsAcrossTicks) {
  Load({.midiEnd = 1000, .audioStart = 50, .audioEnd = 50});
  control->PlaceTick(10);
  CoutCapture console;
  EXPECT_TRUE(PlanFails(1000, "requestedSampleCount.GetUnscaled() != 0", 187));
  EXPECT_EQ(Registrations(), Journal());
}

TEST_F(ReadsAcrossTicks, ALoopEventAtThePositionFails) {
  Place(20);
  control->AddLoop(Vamp(5, 20));
  EXPECT_TRUE(PlanFails(1000, "requestedEndSampleIndex > this->sampleIndex_", 207));
}

TEST_F(ReadsAcrossTicks, ACaesuraStopWithoutACaesuraFails) {
  script.found = {{.caesuraStop = true}};
  EXPECT_TRUE(PlanFails(1000, "this->HasPendingCaesura()", 226));
}

TEST_F(ReadsAcrossTicks, AnAdvancePastTheEndOfTheAudioFails) {
  Load({.midiEnd = 1000, .audioEnd = 100});
  script.found = {{.reachedTick = 101}};
  EXPECT_TRUE(PlanFails(10'000, "this->tickIndex_ <= this->audioEndTickIndex_", 262));
  EXPECT_EQ(control->GetTickIndex(), 101u) << "found when it has moved";
  EXPECT_EQ(stream.tick, 0u) << "the control stream has not";
}

TEST_F(ReadsAcrossTicks, AnAdvancePastTheRequestedEndFails) {
  script.found = {{.reachedTick = 42}};
  EXPECT_TRUE(PlanFails(1000, "this->tickIndex_ < requestedEndTickIndex", 270));
}

TEST_F(ReadsAcrossTicks, AnAdvanceBackwardsFails) {
  Place(20);
  script.found = {{.reachedTick = 19}};
  EXPECT_TRUE(PlanFails(1000, "samplesToLoad >= 0", 273));
}

TEST_F(ReadsAcrossTicks, AnAdvanceFurtherThanTheRequestFails) {
  Place(20);
  script.found = {{.reachedTick = 60}};
  script.onFindOnAdvance = [&] { Place(0); };  // the position moved and no replan was asked for
  EXPECT_TRUE(PlanFails(1000, "samplesToLoad <= requestedSampleCount.GetUnscaled()", 274));
}

TEST_F(ReadsAcrossTicks, AReadThatEndsOutsideTheTickReachedFails) {
  Place(20);
  script.found = {{.reachedTick = 61}};
  script.onFindOnAdvance = [&] { Place(0); };
  EXPECT_TRUE(PlanFails(1000,
                        "this->tickIndex_ == this->samplesTicksConverter_.SamplesToTicksInteger( "
                        "this->sampleIndex_ + samplesToLoad)",
                        283));
}

}  // namespace
