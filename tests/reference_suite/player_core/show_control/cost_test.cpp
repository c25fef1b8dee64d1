#include <gtest/gtest.h>

#include "tests/reference_suite/player_core/support/stage.h"
#include "tests/support/allocation_watch.h"

namespace {

using test_support::AllocationWatch;
using test_support::kBar;
using test_support::Stage;
using test_support::TestSong;

TestSong ManyCues() {
  TestSong song("1");
  song.Bars(2000);
  for (unsigned bar = 0; bar < 1000; ++bar) {
    song.Vamp(bar * kBar, (bar + 1) * kBar)
        .Cut(bar * kBar + 7, bar * kBar + 9)
        .TempoScale(bar * kBar + 3, 0.5 + bar % 3);
  }
  for (unsigned bar = 0; bar < 100; ++bar) song.Caesura(bar * kBar + 20);
  return song;
}

TEST(PlanningCost, LookingForTheNextEventAllocatesNothing) {
  Stage stage(ManyCues());
  const AllocationWatch watch;
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.FindNextControlEventOnAdvance(0, 100);
  stage.control.HasPendingCaesura();
  unsigned target = 0;
  stage.control.HasCutAtTickIndex(7, &target);
  EXPECT_EQ(watch.Count(), 0);
}

TEST(PlanningCost, TakingALoopAllocatesNothing) {
  Stage stage(ManyCues());
  stage.control.DoSkipAhead(30);  // past cut and caesura
  stage.control.PlayTo(kBar);
  const AllocationWatch watch;
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.FindNextControlEventOnAdvance(kBar, kBar + 100);
  {
    exc::ScopeLock lock(stage.control);
    stage.control.FindNextControlEventOnSeek(0, false);
    stage.control.SetJump(0, lock, true);
  }
  EXPECT_EQ(watch.Count(), 0);
  EXPECT_EQ(stage.control.GetTickIndex(), 0U);
}

TEST(PlanningCost, TakingACutAllocatesNothing) {
  Stage stage(ManyCues());
  stage.control.PlayTo(7);
  const AllocationWatch watch;
  stage.control.FindNextControlEventOnAdvance(7, 100);
  {
    exc::ScopeLock lock(stage.control);
    stage.control.FindNextControlEventOnSeek(9, false);
    stage.control.SetJump(9, lock, true);
  }
  EXPECT_EQ(watch.Count(), 0);
}

TEST(PlanningCost, SeekingBackAndForthAllocatesNothing) {
  Stage stage(ManyCues());
  stage.control.Seek(50 * kBar);
  stage.control.Seek(0);
  const AllocationWatch watch;
  stage.control.Seek(90 * kBar);
  stage.control.Seek(10 * kBar);
  EXPECT_EQ(watch.Count(), 0);
}

TEST(PlanningCost, WhatAPerformerAsksForAllocatesNothing) {
  Stage stage(ManyCues());
  const AllocationWatch watch;
  stage.control.ExitLoop();
  bool isReached = false;
  stage.control.CancelCaesura(&isReached);
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
