#include <gtest/gtest.h>

#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/ob_show_control/control_fixture.h"
#include "tests/support/slot_index.h"

namespace {

using test_support::SlotIndex;

class Construction : public test_support::ControlTest {};

TEST_F(Construction, EverythingStartsAt0) {
  OBShowControl fresh(activeSongNumber, showData, nullptr, converter, guiUpdate, transients, nullptr);
  EXPECT_EQ(fresh.GetSampleIndex(), 0);
  EXPECT_EQ(fresh.GetSampleCount(), 0);
  EXPECT_EQ(fresh.GetLastJumpSampleIndex(), 0);
  EXPECT_EQ(fresh.GetJumpTargetSampleIndex(), 0);
  EXPECT_EQ(fresh.GetStartTickIndex(), 0u);
  EXPECT_EQ(fresh.GetEndTickIndex(), 0u);
  EXPECT_EQ(fresh.GetTickIndex(), 0u);
}

TEST_F(Construction, TheCollaboratorsAreThoseGiven) {
  EXPECT_EQ(&control->GetGuiUpdate(), &guiUpdate);
  EXPECT_NE(dynamic_cast<HowToPlayOrbel*>(&control->GetHowToPlay()), nullptr);
}

TEST_F(Construction, NobodysClockIsFollowed) {
  fakes::TakeJournal();
  EXPECT_FALSE(control->FollowsClock());
  control->FollowClock(true);
  EXPECT_FALSE(control->FollowsClock());
  EXPECT_EQ(fakes::TakeJournal(), test_support::Journal()) << "the base's versions are not called";
}

TEST_F(Construction, TheLockIsReentrant) {
  exc::ScopeLock lock(*control);
  EXPECT_EQ(control->GetSampleIndex(), 0) << "takes it again";
  EXPECT_FALSE(LocksAreFree()) << "and gives up its own level alone";
}

TEST(ShowControlSlots, StandInTheOrderOfTheContract) {
  unsigned slot = 0;
  EXPECT_EQ(SlotIndex(&OBShowControl::Lock), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::Unlock), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::TryLock), slot++);
  slot += 2;  // the destructor
  EXPECT_EQ(SlotIndex(&OBShowControl::get_mutex), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::ForwardArgument), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::Forward), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetLock), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::FullReset), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::FollowsClock), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetEndTickIndex), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetGuiUpdate), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetStartTickIndex), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::LoadSong), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::OnCaesuraStop), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::ResetGuiUpdate), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::Seek), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::SetChangeLog), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::FollowClock), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::ResetControlVariables), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetCaesuraCountdown), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetHowToPlay), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetFirstCaesuraStackTickIndex), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::FinishLoadingSongLog), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetCaesuraTickIndexAlignedWithClock), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::LoadStartAndEndTickIndices), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::SetJump), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::SetDataOnGuiAndHowToPlay), slot++);
  EXPECT_EQ(SlotIndex(&OBShowControl::GetNextReadSampleCount), std::nullopt);
  EXPECT_EQ(SlotIndex(&OBShowControl::ResetForRecovery), std::nullopt);
}

}  // namespace
