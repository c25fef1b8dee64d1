#include <gtest/gtest.h>

#include <stdexcept>

#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/ob_show_control/control_fixture.h"

namespace {

using fakes::TakeJournal;
using test_support::Journal;

class SongRange : public test_support::ControlTest {};

TEST_F(SongRange, ATimelineWithoutAnAudioEndRunsToTheEndOfItsMidi) {
  Load({.midiEnd = 1234, .audioStart = 7, .audioEnd = 0});
  EXPECT_EQ(control->GetStartTickIndex(), 7u);
  EXPECT_EQ(control->GetEndTickIndex(), 1234u);
}

TEST_F(SongRange, AnAudioEndIsTheEndOfTheSong) {
  Load({.midiEnd = 1234, .audioEnd = 1000});
  EXPECT_EQ(control->GetEndTickIndex(), 1000u);
  Load({.midiEnd = 1234, .audioEnd = 2000});
  EXPECT_EQ(control->GetEndTickIndex(), 2000u) << "also when it lies past the MIDI";
}

TEST_F(SongRange, LoadingTheRangeIsAllThatLoadStartAndEndDoes) {
  control->LoadStartAndEndTickIndices();
  EXPECT_EQ(TakeJournal(), Journal()) << "the base's own version is not called";
}

TEST_F(SongRange, ASongMustBeLoaded) {
  fakes::planning::GetScript().song = nullptr;
  EXPECT_THROW(control->LoadStartAndEndTickIndices(), std::logic_error);
  EXPECT_THROW(control->FinishLoadingSongLog(), std::logic_error);
  EXPECT_TRUE(LocksAreFree());
}

TEST_F(SongRange, FinishingALoadHandsTheSongToTheConverter) {
  Load({.midiEnd = 1000, .audioStart = 480}, {{0, 500'000}, {960, 250'000}});
  EXPECT_EQ(converter.GetAudioStart(), 480u);
  EXPECT_EQ(converter.TicksToSamples(960), 480 * 24);
}

TEST_F(SongRange, FinishingALoadStartsTheSamplesAnewAndKeepsTheRest) {
  Place(20);
  control->AddLoop({.targetTick = 2, .tick = 20, .kind = 64});
  ASSERT_TRUE(control->GetJumpIsNext());
  Place(30);
  control->AddToSampleIndex(10);
  control->AdjustNextJumpSampleIndex(24);
  control->SkipAheadSamplesOnNextJump(48);
  TakeJournal();

  control->FinishLoadingSongLog();
  EXPECT_EQ(control->GetSampleIndex(), 0);
  EXPECT_EQ(control->GetLastJumpSampleIndex(), 480);
  EXPECT_EQ(control->GetJumpTargetSampleIndex(), 48);
  EXPECT_EQ(control->GetSampleCount(), 10);
  exc::ScopeLock lock(*control);
  control->SetJump(10, lock, true);
  EXPECT_EQ(control->GetSampleIndex(), 288) << "the adjustment is gone, the skip is not";
}

TEST_F(SongRange, FinishingALoadExpectsNoSamples) {
  ASSERT_EQ(Plan(100), 100);
  control->FinishLoadingSongLog();
  control->AddToSampleIndex(24);
  EXPECT_EQ(control->GetTickIndex(), 1u) << "more than planned";
}

TEST_F(SongRange, FinishingALoadExpectsNotEvenOneSample) {
  Load({.midiEnd = 1000}, {{0, 20'834}});  // one sample a tick
  control->AddToSampleIndex(1);
  EXPECT_EQ(control->GetTickIndex(), 1u);
}

TEST_F(SongRange, TheBaseFinishesWithNoLockHeld) {
  bool called = false;
  fakes::planning::GetScript().onFinishLoadingSongLog = [&] {
    called = true;
    EXPECT_TRUE(LocksAreFree());
  };
  control->FinishLoadingSongLog();
  EXPECT_TRUE(called);
}

TEST_F(SongRange, TheLocksAreTakenInTheirOrder) {
  fakes::planning::GetScript().onFinishLoadingSongLog = [] { fakes::Write("base"); };
  fakes::planning::GetScript().writesJournal = false;
  {
    fakes::locks::Journaling journaling;
    control->FinishLoadingSongLog();
  }
  Journal journal = TakeJournal();
  journal.resize(7);  // what follows is the base's
  EXPECT_EQ(journal, (Journal{"+GuiUpdate", "+SamplesTicksConverter", "+ShowControl", "-ShowControl",
                              "-SamplesTicksConverter", "-GuiUpdate", "base"}));
}

TEST_F(SongRange, ASongWithoutATempoAtTheStartIsAnErrorAndTheLocksAreFree) {
  Place(20);
  song.emplace(test_support::SongWithTempos({{10, 500'000}}));
  EXPECT_THROW(control->FinishLoadingSongLog(), std::logic_error);
  EXPECT_TRUE(LocksAreFree());
  EXPECT_EQ(control->GetSampleIndex(), 480) << "nothing starts anew";
  EXPECT_EQ(TakeJournal(), Journal()) << "the base is not called";
}

}  // namespace
