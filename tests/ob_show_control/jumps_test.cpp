#include <gtest/gtest.h>

#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/ob_show_control/control_fixture.h"

// A tick is 24 samples.

namespace {

using fakes::TakeJournal;
using test_support::Journal;

class Jumps : public test_support::ControlTest {
 protected:
  void Jump(unsigned tick, bool skipAhead) {
    exc::ScopeLock lock(*control);
    control->SetJump(tick, lock, skipAhead);
  }
};

LoopEvent Loop(int kind, unsigned from, unsigned to, int limit, int done) {
  LoopEvent loop;
  loop.targetTick = from;
  loop.tick = to;
  loop.limit = limit;
  loop.done = done;
  loop.kind = static_cast<unsigned char>(kind);
  return loop;
}

constexpr int kVamp = 64;
constexpr int kRepeat = 65;
constexpr int kSafety = 66;

// ---- SetJump -------------------------------------------------------------------------------------------

TEST_F(Jumps, AJumpMovesTheAudioToTheFirstSampleOfItsTarget) {
  Place(20, 7);
  Jump(3, false);
  EXPECT_EQ(control->GetSampleIndex(), 72);
  EXPECT_EQ(control->GetLastJumpSampleIndex(), 487) << "where it was taken";
  EXPECT_EQ(control->GetTickIndex(), 3u);
  EXPECT_EQ(TakeJournal(), (Journal{"base.SetJump 3 0", "stream.Seek 3"}));
}

TEST_F(Jumps, TheBaseJumpsFirst) {
  Place(20, 7);
  long long before = -1;
  long long lastJump = -1;
  fakes::planning::GetScript().onSetJump = [&] {
    before = control->GetSampleIndex();
    lastJump = control->GetLastJumpSampleIndex();
  };
  Jump(3, true);
  EXPECT_EQ(before, 487) << "still where the jump was taken";
  EXPECT_EQ(lastJump, 0);
  EXPECT_EQ(control->GetLastJumpSampleIndex(), 487);
}

TEST_F(Jumps, WithoutSkipAheadAJumpLandsExactlyAndThrowsTheSkipAway) {
  control->SkipAheadSamplesOnNextJump(100);
  Jump(10, false);
  EXPECT_EQ(control->GetSampleIndex(), 240);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 240) << "the 100 are cleared";
}

TEST_F(Jumps, WithoutSkipAheadTheAdjustmentIsThrownAwayToo) {
  control->AdjustNextJumpSampleIndex(-30);
  Jump(10, false);
  EXPECT_EQ(control->GetSampleIndex(), 240);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 240);
}

TEST_F(Jumps, SkipAheadAndAdjustmentAddUpAndTheTickFollows) {
  control->SkipAheadSamplesOnNextJump(100);
  control->AdjustNextJumpSampleIndex(-30);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 310) << "240 + 70";
  EXPECT_EQ(control->GetTickIndex(), 12u);
  EXPECT_EQ(TakeJournal(), (Journal{"base.SetJump 10 1", "stream.Seek 10", "base.DoSkipAhead 12",
                                    "stream.AdvanceToTickIndex 12"}));
}

TEST_F(Jumps, SkipAheadAloneMovesOn) {
  control->SkipAheadSamplesOnNextJump(24);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 264);
  EXPECT_EQ(control->GetTickIndex(), 11u);
}

TEST_F(Jumps, OneSampleIsSkippedToo) {
  control->SkipAheadSamplesOnNextJump(1);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 241);
}

TEST_F(Jumps, AnAdjustmentAloneMovesBothWays) {
  control->AdjustNextJumpSampleIndex(-24);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 216);
  EXPECT_EQ(control->GetTickIndex(), 9u);
  control->AdjustNextJumpSampleIndex(24);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 264);
}

TEST_F(Jumps, CorrectionsThatCancelOutStillMoveTheTickToTheSample) {
  control->SkipAheadSamplesOnNextJump(30);
  control->AdjustNextJumpSampleIndex(-30);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 240);
  EXPECT_EQ(TakeJournal().at(2), "base.DoSkipAhead 10");
}

TEST_F(Jumps, WithoutACorrectionNothingIsSkipped) {
  Jump(10, true);
  EXPECT_EQ(TakeJournal(), (Journal{"base.SetJump 10 1", "stream.Seek 10"}));
}

TEST_F(Jumps, CorrectionsReplaceEachOther) {
  control->SkipAheadSamplesOnNextJump(1000);
  control->SkipAheadSamplesOnNextJump(24);
  control->AdjustNextJumpSampleIndex(1000);
  control->AdjustNextJumpSampleIndex(0);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 264);
}

TEST_F(Jumps, TheLargestSkipIsAddedWithoutASign) {
  control->SkipAheadSamplesOnNextJump(4'294'967'040);  // 178,956,960 ticks
  Jump(0, true);
  EXPECT_EQ(control->GetSampleIndex(), 4'294'967'040);
}

TEST_F(Jumps, ACorrectionIsGoodForOneJump) {
  control->SkipAheadSamplesOnNextJump(24);
  Jump(10, true);
  Jump(10, true);
  EXPECT_EQ(control->GetSampleIndex(), 240);
}

// ---- GetJumpIsNext -------------------------------------------------------------------------------------

TEST_F(Jumps, WithoutLoopsAndCutsNoJumpIsNext) {
  Place(20);
  EXPECT_FALSE(control->GetJumpIsNext());
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 0) << "unchanged";
}

TEST_F(Jumps, AVampAtTheCurrentTickIsAJump) {
  Place(20);
  control->AddLoop(Loop(kVamp, 5, 20, 0, 1000));
  EXPECT_TRUE(control->GetJumpIsNext());
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 120);
}

TEST_F(Jumps, ARepeatWithLimit2AndDone2IsNotAJump) {
  Place(20);
  control->AddLoop(Loop(kRepeat, 5, 20, 2, 2));
  EXPECT_FALSE(control->GetJumpIsNext());
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 0);
}

TEST_F(Jumps, ARepeatWithLimit0AlwaysIs) {
  Place(20);
  control->AddLoop(Loop(kRepeat, 5, 20, 0, 2));
  EXPECT_TRUE(control->GetJumpIsNext());
}

TEST_F(Jumps, ARepeatThatIsNotUsedUpIsAJump) {
  Place(20);
  control->AddLoop(Loop(kRepeat, 5, 20, 2, 1));
  EXPECT_TRUE(control->GetJumpIsNext());
}

TEST_F(Jumps, LimitAndDoneAreComparedWithTheirSigns) {
  Place(20);
  control->AddLoop(Loop(kRepeat, 5, 20, -1, 0));
  EXPECT_FALSE(control->GetJumpIsNext());
}

TEST_F(Jumps, ARepeatAtAnotherTickIsNotAJump) {
  Place(20);
  control->AddLoop(Loop(kRepeat, 5, 21, 0, 0));
  EXPECT_FALSE(control->GetJumpIsNext());
}

TEST_F(Jumps, OtherKindsOfLoopsAreNotAskedAbout) {
  Place(20);
  control->AddLoop(Loop(kSafety, 5, 20, 0, 0));
  EXPECT_FALSE(control->GetJumpIsNext());
  control->AddLoop(Loop(kVamp, 6, 20, 0, 0));
  EXPECT_TRUE(control->GetJumpIsNext()) << "the first vamp or repeat counts";
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 144);
}

TEST_F(Jumps, CanceledLoopsAreNotAskedAbout) {
  Place(20);
  LoopEvent canceled = Loop(kVamp, 5, 20, 0, 0);
  canceled.canceled = 1;
  control->AddLoop(canceled);
  EXPECT_FALSE(control->GetJumpIsNext());
}

TEST_F(Jumps, ACutAtTheCurrentTickIsAJump) {
  Place(20);
  fakes::planning::GetScript().cuts[20] = 50;
  EXPECT_TRUE(control->GetJumpIsNext());
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 1200);
}

TEST_F(Jumps, ALoopThatIsUsedUpDoesNotHideACut) {
  Place(20);
  control->AddLoop(Loop(kRepeat, 5, 20, 2, 2));
  fakes::planning::GetScript().cuts[20] = 50;
  EXPECT_TRUE(control->GetJumpIsNext());
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 1200);
}

TEST_F(Jumps, ALoopComesBeforeACut) {
  Place(20);
  control->AddLoop(Loop(kVamp, 5, 20, 0, 0));
  fakes::planning::GetScript().cuts[20] = 50;
  EXPECT_TRUE(control->GetJumpIsNext());
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 120);
}

// ---- GetCutToEndOfSongIsNext ---------------------------------------------------------------------------

TEST_F(Jumps, ACutWhoseTargetIsTheEndOfTheMidiIsACutToTheEnd) {
  Place(20);
  fakes::planning::GetScript().cuts[20] = 1000;
  EXPECT_TRUE(control->GetCutToEndOfSongIsNext());
  fakes::planning::GetScript().cuts[20] = 1001;
  EXPECT_TRUE(control->GetCutToEndOfSongIsNext());
  fakes::planning::GetScript().cuts[20] = 999;
  EXPECT_FALSE(control->GetCutToEndOfSongIsNext());
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 0) << "asking changes nothing";
}

TEST_F(Jumps, WithoutACutHereNoneGoesToTheEnd) {
  Place(20);
  fakes::planning::GetScript().cuts[21] = 1000;
  EXPECT_FALSE(control->GetCutToEndOfSongIsNext());
}

TEST_F(Jumps, TheCutToTheEndIsComparedWithTheEndOfTheMidiAndNotOfTheAudio) {
  Load({.midiEnd = 1000, .audioEnd = 500});
  Place(20);
  fakes::planning::GetScript().cuts[20] = 500;
  EXPECT_FALSE(control->GetCutToEndOfSongIsNext());
}

}  // namespace
