#include <gtest/gtest.h>

#include "suite/core/event_codes.h"
#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using CL::VampExit;
using test_support::kBar;
using test_support::kBeat;
using test_support::Stage;
using test_support::TestSong;

unsigned At(unsigned bar) {
  return (bar - 1) * kBar;
}

std::string PerformersJump(Stage& stage) {
  Jump jump;
  if (!stage.control.GetPerformersJump(&jump)) return "none";
  EXPECT_EQ(jump.kind, codes::kCut);
  return std::to_string(jump.fromTick) + "->" + std::to_string(jump.toTick);
}

std::string NextJump(Stage& stage) {
  Jump jump;
  if (!stage.control.GetNextJump(&jump)) return "none";
  return codes::editNameByTeskEventCode(jump.kind) + " " + std::to_string(jump.fromTick) + "->" +
         std::to_string(jump.toTick);
}

// ---- leaving a loop --------------------------------------------------------------------------------

TEST(ExitLoop, PlaybackRunsOnThroughTheEndOfTheLoop) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(4)));
  stage.control.PlayTo(At(3));
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(PerformersJump(stage), "none");
  EXPECT_EQ(stage.control.Perform(), "3840..17280 end");
}

TEST(ExitLoop, TheInnermostAroundThePositionIsLeft) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(8)).Repeat(At(3), At(6), 2).Vamp(At(4), At(5)));
  stage.control.PlayTo(At(4) + 10);
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(stage.control.DescribeLoop(At(5)), "0/0/1");
  EXPECT_EQ(stage.control.DescribeLoop(At(6)), "1/0/0");
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(stage.control.DescribeLoop(At(6)), "1/0/1");
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "0/0/0");
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "0/0/1");
  EXPECT_FALSE(stage.control.ExitLoop());
}

TEST(ExitLoop, OfTwoThatBeginTogetherTheOneThatEndsFirstIsTheInner) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(8)).Vamp(At(2), At(5)));
  stage.control.PlayTo(At(2));
  stage.control.ExitLoop();
  EXPECT_EQ(stage.control.DescribeLoop(At(5)), "0/0/1");
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "0/0/0");
}

TEST(ExitLoop, AUsedUpRepeatIsNotMeant) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(8)).Repeat(At(3), At(5), 2));
  stage.control.PlayTo(At(5));
  stage.control.Play(At(5) + 100);
  ASSERT_EQ(stage.control.GetTickIndex(), At(3));
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(stage.control.DescribeLoop(At(5)), "1/1/0");
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "0/0/1");
}

TEST(ExitLoop, ALoopStartsAroundItsFirstTickAndEndsBeforeItsLast) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(3), At(5)));
  stage.control.PlayTo(At(3) - 1);
  EXPECT_FALSE(stage.control.ExitLoop());
  stage.control.PlayTo(At(3));
  EXPECT_TRUE(stage.control.ExitLoop());
  Stage late(TestSong("1").Bars(9).Vamp(At(3), At(5)));
  late.control.PlayTo(At(5));
  EXPECT_FALSE(late.control.ExitLoop());
}

TEST(ExitLoop, OutsideOfEveryLoopThereIsNothingToLeave) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(3), At(5)));
  EXPECT_FALSE(stage.control.ExitLoop());
}

TEST(ExitLoop, ARepeatIsLeftToo) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(2), At(4), 4));
  stage.control.PlayTo(At(3));
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(stage.control.Perform(), "3840..17280 end");
}

TEST(ExitLoop, AVampCanBeLeftAtTheNextBar) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), VampExit::NextBar));
  stage.control.PlayTo(At(3) + 100);
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(PerformersJump(stage), "5760->9600");
  EXPECT_EQ(stage.control.Perform(), "3940..5760 9600..17280 end");
}

TEST(ExitLoop, AVampCanBeLeftAtTheNextBeat) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), VampExit::NextBeat));
  stage.control.PlayTo(At(3) + 100);
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(stage.control.Perform(), "3940..4320 9600..17280 end");
}

TEST(ExitLoop, TheLineAtThePositionItselfIsNotTheNextOne) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), VampExit::NextBar));
  stage.control.PlayTo(At(3));
  stage.control.ExitLoop();
  EXPECT_EQ(PerformersJump(stage), "5760->9600");
}

TEST(ExitLoop, TheLineOneTickLaterIsTheNextOne) {
  for (const VampExit exit : {VampExit::NextBar, VampExit::NextBeat}) {
    Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), exit));
    stage.control.PlayTo(At(4) - 1);
    stage.control.ExitLoop();
    EXPECT_EQ(PerformersJump(stage), "5760->9600");
  }
}

TEST(ExitLoop, InTheLastBarTheEndIsTheNextLine) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(4), VampExit::NextBar));
  stage.control.PlayTo(At(3) + 1);
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(PerformersJump(stage), "none");
  EXPECT_EQ(stage.control.Perform(), "3841..17280 end");
}

TEST(ExitLoop, APerformersJumpIsTakenOnce) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(1), At(7), 2).Vamp(At(2), At(6), VampExit::NextBar));
  stage.control.PlayTo(At(3) + 100);
  stage.control.ExitLoop();
  // The repeat comes back into the vamp, which is armed anew and has not been left.
  const std::string heard = stage.control.Perform(100, 400);
  EXPECT_EQ(heard.find("3940..5760 9600..11520 0..9600 1920..9600 "), 0U) << heard;
}

TEST(ExitLoop, APerformersJumpThatACutLeavesBehindIsDropped) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), VampExit::NextBar).Cut(At(3) + 500, At(5)));
  stage.control.PlayTo(At(3) + 100);
  stage.control.ExitLoop();
  EXPECT_EQ(PerformersJump(stage), "5760->9600");
  stage.control.PlayTo(At(3) + 500);
  EXPECT_EQ(stage.control.Play(At(3) + 600), "jump 7680");
  EXPECT_EQ(PerformersJump(stage), "none");
  EXPECT_EQ(stage.control.Perform(), "7680..17280 end");
}

TEST(ExitLoop, APerformersJumpOntoWhichACutLeadsIsTaken) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), VampExit::NextBar).Cut(At(3) + 500, At(4)));
  stage.control.PlayTo(At(3) + 100);
  stage.control.ExitLoop();
  EXPECT_EQ(stage.control.Perform(), "3940..4340 9600..17280 end");
}

TEST(ExitLoop, APerformersJumpOutlivesALoopBackBeforeIt) {
  Stage stage(
      TestSong("1").Bars(9).Vamp(At(2), At(6), VampExit::NextBar).Repeat(At(3) + 200, At(3) + 400, 2));
  stage.control.PlayTo(At(3) + 100);
  stage.control.ExitLoop();
  EXPECT_EQ(stage.control.Perform(), "3940..4240 4040..5760 9600..17280 end");
}

TEST(ExitLoop, ASeekForgetsAPerformersJump) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), VampExit::NextBar));
  stage.control.PlayTo(At(3));
  stage.control.ExitLoop();
  stage.control.Seek(At(2));
  EXPECT_EQ(PerformersJump(stage), "none");
}

TEST(ExitLoop, LoadingASongForgetsAPerformersJump) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(1), At(6), VampExit::NextBar));
  stage.control.ExitLoop();
  stage.player.LoadSong("1");
  EXPECT_EQ(PerformersJump(stage), "none");
}

TEST(ExitLoop, APerformersJumpCanBeTakenBack) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(1), At(6), VampExit::NextBar));
  stage.control.ExitLoop();
  stage.control.ClearPerformersJump();
  EXPECT_EQ(PerformersJump(stage), "none");
  EXPECT_EQ(stage.control.Perform(), "0..17280 end");
}

// ---- safeties --------------------------------------------------------------------------------------

TEST(RepeatSafety, EachTimeItIsAskedForItIsPlayedOnceMore) {
  Stage stage(TestSong("1").Bars(9).Safety(At(2), At(4)));
  stage.control.PlayTo(At(3));
  EXPECT_TRUE(stage.control.RepeatSafety());
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "1/0/0");
  EXPECT_TRUE(stage.control.RepeatSafety());
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "2/0/0");
  EXPECT_EQ(stage.control.Perform(), "3840..5760 1920..5760 1920..17280 end");
}

TEST(RepeatSafety, AskedForInALaterPassItIsPlayedOnceMore) {
  Stage stage(TestSong("1").Bars(9).Safety(At(2), At(4)));
  stage.control.PlayTo(At(3));
  stage.control.RepeatSafety();
  stage.control.PlayTo(At(4));
  stage.control.Play(At(4) + 100);
  stage.control.PlayTo(At(3));
  EXPECT_TRUE(stage.control.RepeatSafety());
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "2/1/0");
  EXPECT_EQ(stage.control.Perform(), "3840..5760 1920..17280 end");
}

TEST(RepeatSafety, OutsideOfASafetyThereIsNoneToRepeat) {
  Stage stage(TestSong("1").Bars(9).Safety(At(2), At(4)).Vamp(At(5), At(6)));
  EXPECT_FALSE(stage.control.RepeatSafety());
  stage.control.PlayTo(At(4));
  EXPECT_FALSE(stage.control.RepeatSafety());
  stage.control.PlayTo(At(5));
  EXPECT_FALSE(stage.control.RepeatSafety());
}

TEST(RepeatSafety, AnAskedForSafetyCanBeLeftAndAskedForOnceMore) {
  Stage stage(TestSong("1").Bars(9).Safety(At(2), At(4)));
  stage.control.PlayTo(At(3));
  stage.control.RepeatSafety();
  stage.control.RepeatSafety();
  EXPECT_TRUE(stage.control.ExitLoop());
  EXPECT_TRUE(stage.control.RepeatSafety());
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "1/0/0");
}

TEST(RepeatSafety, ASafetyThatNobodyAskedForIsNothingToLeave) {
  Stage stage(TestSong("1").Bars(9).Safety(At(2), At(4)));
  stage.control.PlayTo(At(3));
  EXPECT_FALSE(stage.control.ExitLoop());
}

// ---- what comes if nobody acts ---------------------------------------------------------------------

TEST(NextJump, IsTheFirstThatWillBeTaken) {
  Stage stage(TestSong("1").Bars(9).Safety(At(1), At(2)).Vamp(At(2), At(3)).Cut(At(5), At(6)));
  EXPECT_EQ(NextJump(stage), "Vamp 3840->1920");
  stage.control.PlayTo(At(2));
  stage.control.ExitLoop();
  EXPECT_EQ(NextJump(stage), "Cut 7680->9600");
  stage.control.PlayTo(At(5));
  stage.control.Play(At(5) + 100);
  EXPECT_EQ(NextJump(stage), "none");
}

TEST(NextJump, ASafetyCountsOnceItHasBeenAskedFor) {
  Stage stage(TestSong("1").Bars(9).Safety(At(1), At(2)));
  EXPECT_EQ(NextJump(stage), "none");
  stage.control.RepeatSafety();
  EXPECT_EQ(NextJump(stage), "Safety 1920->0");
}

TEST(NextJump, OfTwoLoopsTheOneThatEndsFirstCountsHoweverFarItLeadsBack) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(1), At(3), 2).Repeat(At(4), At(5), 2));
  EXPECT_EQ(NextJump(stage), "Repeat 3840->0");
}

TEST(NextJump, OfTwoLoopsOverOnePassageTheOneWrittenFirstCounts) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(1), At(3), 2).Vamp(At(1), At(3)));
  EXPECT_EQ(NextJump(stage), "Repeat 3840->0");
  stage.control.PlayTo(At(3));
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(NextJump(stage), "Repeat 3840->0");
}

TEST(NextJump, AtOneTickTheInnermostLoopComesBeforeACut) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(1), At(3), 2).Repeat(At(2), At(3), 2).Cut(At(3), At(5)));
  EXPECT_EQ(NextJump(stage), "Repeat 3840->1920");
}

TEST(NextJump, APerformersJumpCountsToo) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(1), At(6), VampExit::NextBeat).Cut(At(2), At(3)));
  stage.control.ExitLoop();
  EXPECT_EQ(NextJump(stage), "Cut 480->9600");
}

TEST(NextJump, AJumpThatIsDueComesFirst) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(1), At(2)));
  stage.control.PlayTo(At(2));
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(NextJump(stage), "Vamp 1920->0");
}

// ---- cuts at a tick --------------------------------------------------------------------------------

TEST(HasCut, TellsTheTargetOfACutThatStartsThere) {
  Stage stage(TestSong("1").Cut(960, 5000).Cut(2000, 6000));
  unsigned target = 7;
  EXPECT_FALSE(stage.control.HasCutAtTickIndex(959, &target));
  EXPECT_EQ(target, 7U);
  EXPECT_TRUE(stage.control.HasCutAtTickIndex(960, &target));
  EXPECT_EQ(target, 5000U);
  EXPECT_TRUE(stage.control.HasCutAtTickIndex(2000, &target));
  EXPECT_EQ(target, 6000U);
}

TEST(HasCut, OneThatLiesBehindIsNotArmed) {
  Stage stage(TestSong("1").Cut(960, 5000));
  stage.control.Seek(961);
  unsigned target = 0;
  EXPECT_FALSE(stage.control.HasCutAtTickIndex(960, &target));
}

TEST(HasCut, APerformersJumpIsOneAndComesFirst) {
  Stage stage(TestSong("1").Vamp(0, 4 * kBar, VampExit::NextBeat).Cut(kBeat, 5000));
  stage.control.ExitLoop();
  unsigned target = 0;
  EXPECT_TRUE(stage.control.HasCutAtTickIndex(kBeat, &target));
  EXPECT_EQ(target, 4 * kBar);
}

TEST(HasCut, OfTwoAtOneTickTheOneWrittenFirstCounts) {
  Stage stage(TestSong("1").Bars(9).Cut(At(3), At(5)).Cut(At(3), At(7)));
  unsigned target = 0;
  EXPECT_TRUE(stage.control.HasCutAtTickIndex(At(3), &target));
  EXPECT_EQ(target, At(5));
}

}  // namespace
