#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

#include "Sources/ob_show_control/errors.h"
#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/ob_show_control/control_fixture.h"
#include "tests/support/throws_with_text.h"

// A tick is 24 samples; the song ends at tick 500, sample 12,000.

namespace {

using fakes::TakeJournal;
using test_support::Journal;

constexpr char kReachedEnd[] = "Recovery reached end of song";

class Recovery : public test_support::ControlTest {
 protected:
  Recovery() {
    Load({.midiEnd = 1000, .audioEnd = 500});
    Place(30, 5);
    control->AddToSampleIndex(1);
  }

  fakes::planning::Script& script = fakes::planning::GetScript();
};

TEST_F(Recovery, AtTheFirstSampleOfATickItKeepsThatTick) {
  control->ResetForRecovery(2400, 123'456);
  EXPECT_EQ(control->GetTickIndex(), 100u);
  EXPECT_EQ(control->GetSampleIndex(), 2400);
  EXPECT_EQ(control->GetSampleCount(), 123'456) << "taken over as it was";
  EXPECT_EQ(TakeJournal(),
            (Journal{"base.ResetControlVariables", "base.RecoverySeek 100", "stream.Seek 100"}));
}

TEST_F(Recovery, InsideATickItGoesOnWithTheNext) {
  control->ResetForRecovery(2401, 7);
  EXPECT_EQ(control->GetTickIndex(), 101u);
  EXPECT_EQ(control->GetSampleIndex(), 2424);
  EXPECT_EQ(control->GetSampleCount(), 7);
}

TEST_F(Recovery, TheTickOnWhichTheBaseSettlesCounts) {
  script.settlesAt = 90;
  control->ResetForRecovery(2400, 7);
  EXPECT_EQ(control->GetSampleIndex(), 2160);
}

TEST_F(Recovery, TheAdvancingOneStartsTwentyTicksFurtherOn) {
  control->ResetForRecoveryAdvance(2400, 7);
  EXPECT_EQ(control->GetTickIndex(), 120u);
  EXPECT_EQ(control->GetSampleIndex(), 2880);
  EXPECT_EQ(control->GetSampleCount(), 7);
  EXPECT_EQ(TakeJournal().at(1), "base.RecoverySeek 120");
}

TEST_F(Recovery, ASettledTickAtTheEndOfTheAudioIsTheEndOfTheSong) {
  EXPECT_TRUE(test_support::ThrowsWithText<RecoveryReachedEndOfSong>(
      [&] { control->ResetForRecovery(12'000, 7); }, kReachedEnd));
  EXPECT_EQ(control->GetSampleIndex(), 0) << "as the reset left it";
  EXPECT_EQ(control->GetSampleCount(), 0);
  EXPECT_EQ(control->GetTickIndex(), 500u) << "the base has moved";
}

TEST_F(Recovery, OneTickBeforeTheEndItSucceeds) {
  control->ResetForRecovery(11'976, 7);
  EXPECT_EQ(control->GetTickIndex(), 499u);
}

TEST_F(Recovery, TheAdvancingOneThrows19TicksBeforeTheEnd) {
  EXPECT_TRUE(test_support::ThrowsWithText<RecoveryReachedEndOfSong>(
      [&] { control->ResetForRecoveryAdvance(481 * 24, 7); }, kReachedEnd));
}

TEST_F(Recovery, TheAdvancingOneThrows20TicksBeforeTheEnd) {
  EXPECT_THROW(control->ResetForRecoveryAdvance(480 * 24, 7), RecoveryReachedEndOfSong);
}

TEST_F(Recovery, TheAdvancingOneSucceeds21TicksBeforeTheEnd) {
  control->ResetForRecoveryAdvance(479 * 24, 7);
  EXPECT_EQ(control->GetTickIndex(), 499u);
  EXPECT_EQ(control->GetSampleIndex(), 499 * 24);
}

TEST_F(Recovery, TheEndIsAskedOfTheVirtualOperation) {
  control->endTick = 100;
  EXPECT_THROW(control->ResetForRecovery(2400, 7), RecoveryReachedEndOfSong);
}

TEST_F(Recovery, TheControlVariablesAreResetByTheVirtualOperation) {
  control->ResetForRecovery(2400, 7);
  EXPECT_EQ(control->variableResets, 1);
  control->ResetForRecoveryAdvance(2400, 7);
  EXPECT_EQ(control->variableResets, 2);
}

TEST_F(Recovery, WhatWasPlannedIsForgotten) {
  control->SkipAheadSamplesOnNextJump(100);
  control->ResetForRecovery(2400, 7);
  EXPECT_EQ(control->GetLastJumpSampleIndex(), 0);
  exc::ScopeLock lock(*control);
  control->SetJump(10, lock, true);
  EXPECT_EQ(control->GetSampleIndex(), 240);
}

// Read planning takes them the other way round.
TEST_F(Recovery, TheLastAssignmentTakesTheShowControlFirst) {
  script.writesJournal = false;
  TakeJournal();
  {
    fakes::locks::Journaling journaling;
    control->ResetForRecovery(2400, 7);
  }
  Journal journal = TakeJournal();
  ASSERT_GE(journal.size(), 4u);
  journal.erase(journal.begin(), journal.end() - 4);
  EXPECT_EQ(journal,
            (Journal{"+ShowControl", "+SamplesTicksConverter", "-SamplesTicksConverter", "-ShowControl"}));
}

TEST(RecoveryReachedEndOfSong, IsARuntimeErrorMadeFromATextOnly) {
  static_assert(std::is_base_of_v<std::runtime_error, RecoveryReachedEndOfSong>);
  static_assert(!std::is_default_constructible_v<RecoveryReachedEndOfSong>);
  EXPECT_STREQ(RecoveryReachedEndOfSong(std::string("text")).what(), "text");
}

}  // namespace
