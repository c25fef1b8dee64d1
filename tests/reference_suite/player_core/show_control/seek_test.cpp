#include <gtest/gtest.h>

#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using test_support::kBar;
using test_support::kBeat;
using test_support::Stage;
using test_support::TestPlayer;
using test_support::TestShow;
using test_support::TestSong;

std::string Calls(test_support::TestShowControl& control, const std::function<void()>& action) {
  std::string calls;
  control.onCall = [&](const std::string& call) { calls += call + "; "; };
  action();
  control.onCall = nullptr;
  return calls;
}

TEST(Seek, MovesPositionAndControlStream) {
  Stage stage(TestSong("1"));
  EXPECT_FALSE(stage.control.Seek(960));
  EXPECT_EQ(stage.control.GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), 960U);
}

TEST(Seek, WithoutASongNothingChanges) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  EXPECT_TRUE(player.GetShowControl().Seek(960));
  EXPECT_EQ(player.GetShowControl().GetTickIndex(), 0U);
}

TEST(Seek, APlaceBeforeTheAudioIsTheStartOfTheSong) {
  Stage stage(TestSong("1").AudioFrom(960));
  stage.control.Seek(2000);
  EXPECT_FALSE(stage.control.Seek(0));
  EXPECT_EQ(stage.control.GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetLastSeekTickIndex(), 960U);
}

TEST(Seek, GoesThroughTheVirtualJumpWithoutSkipping) {
  Stage stage(TestSong("1"));
  EXPECT_EQ(Calls(stage.control, [&] { stage.control.Seek(960); }), "SetJump 960; ");
}

TEST(Seek, IsRememberedAsLastSeekTick) {
  Stage stage(TestSong("1"));
  stage.control.Seek(960);
  stage.control.MoveTo(1000);
  EXPECT_EQ(stage.control.GetLastSeekTickIndex(), 960U);
}

TEST(Seek, ClearsTheFermata) {
  Stage stage(TestSong("1").Caesura(0));
  stage.control.Advance(0, 100);
  bool isReached = false;
  ASSERT_TRUE(stage.control.CancelCaesura(&isReached));
  stage.control.Seek(960);
  EXPECT_FALSE(stage.control.GetFermataCanceledCaesura());
}

TEST(Seek, ClearsTheFlagsAndAsksForANewPlan) {
  Stage stage(TestSong("1").Caesura(0));
  stage.control.Advance(0, 100);
  ASSERT_TRUE(stage.control.IsCaesuraStop());
  stage.control.Seek(960);
  EXPECT_FALSE(stage.control.IsCaesuraStop());
  EXPECT_FALSE(stage.control.IsJumpPending());
  EXPECT_TRUE(stage.control.IsReplan());
}

TEST(Seek, ForgetsAnArmedJump) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.MoveTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.Seek(960);
  EXPECT_EQ(stage.control.Advance(960, 1060), "1060");
}

// ---- a jump ----------------------------------------------------------------------------------------

TEST(SetJump, MovesPositionAndControlStream) {
  Stage stage(TestSong("1"));
  exc::ScopeLock lock(stage.control);
  stage.control.SetJump(700, lock, true);
  EXPECT_EQ(stage.control.GetTickIndex(), 700U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), 700U);
}

TEST(SetJump, TheControlStreamSeeksSoThatTheValuesBeforeAreKept) {
  Stage stage(TestSong("1").TempoScale(0, 0.5).TempoScale(960, 2.0));
  stage.control.MoveTo(960);
  exc::ScopeLock lock(stage.control);
  stage.control.SetJump(100, lock, true);
  EXPECT_EQ(stage.control.GetHowToPlay().GetPreSeekTempoScale(), 2.0);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTempoScaleValue(), 0.5);
}

TEST(SetJump, ClearsTheArmedJump) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.MoveTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  {
    exc::ScopeLock lock(stage.control);
    stage.control.SetJump(960, lock, true);
  }
  EXPECT_EQ(stage.control.Advance(960, 1060), "1060");
}

TEST(SetJump, ClearsAPerformersJumpThatWasJustTaken) {
  Stage stage(TestSong("1").Vamp(0, 4 * kBar, CL::VampExit::NextBeat));
  stage.control.ExitLoop();
  stage.control.PlayTo(kBeat);
  EXPECT_EQ(stage.control.Advance(kBeat, kBeat + 100), "jump 7680");
  {
    exc::ScopeLock lock(stage.control);
    stage.control.SetJump(4 * kBar, lock, true);
  }
  Jump jump;
  EXPECT_FALSE(stage.control.GetPerformersJump(&jump));
}

TEST(SetJump, KeepsAPerformersJumpThatIsNotTheOneTaken) {
  Stage stage(TestSong("1").Vamp(0, 4 * kBar, CL::VampExit::NextBar));
  stage.control.ExitLoop();
  {
    exc::ScopeLock lock(stage.control);
    stage.control.SetJump(100, lock, true);
  }
  Jump jump;
  EXPECT_TRUE(stage.control.GetPerformersJump(&jump));
}

// ---- skipping ahead --------------------------------------------------------------------------------

TEST(SkipAhead, MovesPositionAndControlStreamForward) {
  Stage stage(TestSong("1").TempoScale(0, 0.5).TempoScale(960, 2.0));
  stage.control.MoveTo(960);
  stage.control.DoSkipAhead(1000);
  EXPECT_EQ(stage.control.GetTickIndex(), 1000U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), 1000U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetPreAdvanceTempoScale(), 2.0);
}

TEST(SkipAhead, DropsTheCuesPassedOver) {
  Stage stage(TestSong("1").Bars(9).Vamp(480, 960).Cut(970, 5000).Caesura(980));
  stage.control.DoSkipAhead(1000);
  EXPECT_TRUE(stage.control.GetLoopsAhead().empty());
  EXPECT_TRUE(stage.control.GetCaesurasAhead().empty());
  EXPECT_EQ(stage.control.Perform(), "1000..17280 end");
}

TEST(SkipAhead, KeepsTheCutsAhead) {
  Stage stage(TestSong("1").Bars(9).Cut(970, 5000).Cut(1500, 6000));
  stage.control.DoSkipAhead(1000);
  EXPECT_EQ(stage.control.Perform(), "1000..1500 6000..17280 end");
}

TEST(SkipAhead, KeepsTheCuesAtItsTick) {
  Stage stage(TestSong("1").Bars(9).Vamp(480, 1000));
  stage.control.DoSkipAhead(1000);
  EXPECT_EQ(stage.control.Play(1100), "jump 480");
  Stage cut(TestSong("1").Bars(9).Cut(1000, 5000).Caesura(1000));
  cut.control.DoSkipAhead(1000);
  EXPECT_EQ(cut.control.Advance(1000, 1100), "jump 5000");
  EXPECT_TRUE(cut.control.HasPendingCaesura());
}

TEST(SkipAhead, DropsAPerformersJumpPassedOver) {
  Stage stage(TestSong("1").Vamp(0, 4 * kBar, CL::VampExit::NextBeat));
  stage.control.ExitLoop();
  stage.control.DoSkipAhead(kBeat + 1);
  Jump jump;
  EXPECT_FALSE(stage.control.GetPerformersJump(&jump));
}

TEST(SkipAhead, ACorrectionMayMoveBackToo) {
  Stage stage(TestSong("1"));
  stage.control.Seek(1000);
  stage.control.DoSkipAhead(998);
  EXPECT_EQ(stage.control.GetTickIndex(), 998U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), 998U);
}

// ---- resets ----------------------------------------------------------------------------------------

TEST(FullReset, StandsAtTheStartAgain) {
  Stage stage(TestSong("1").AudioFrom(960).Caesura(2000));
  stage.control.Seek(5000);
  EXPECT_FALSE(stage.control.FullReset());
  EXPECT_EQ(stage.control.GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetLastSeekTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (std::vector<unsigned>{2000}));
}

TEST(FullReset, ResetsTheControlVariablesFirst) {
  Stage stage(TestSong("1").AudioFrom(960));
  EXPECT_EQ(Calls(stage.control, [&] { stage.control.FullReset(); }), "ResetControlVariables; SetJump 960; ");
}

TEST(FullReset, IsTrueOnlyWithoutASong) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  EXPECT_TRUE(player.GetShowControl().FullReset());
  player.LoadSong("1");
  EXPECT_FALSE(player.GetShowControl().FullReset());
}

TEST(ResetControlVariables, ClearsFlagsJumpsAndStoredFactors) {
  Stage stage(TestSong("1").Vamp(0, 4 * kBar, CL::VampExit::NextBar).Vamp(100, 200));
  stage.control.ExitLoop();
  stage.control.MoveTo(200);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.Advance(200, 300);
  ASSERT_TRUE(stage.control.IsJumpPending());
  stage.control.SetDspFactors(0.5, 3);
  stage.control.ResetControlVariables();
  EXPECT_FALSE(stage.control.IsJumpPending());
  EXPECT_EQ(stage.control.GetDspFactors(), (std::pair<double, int>(1.0, 0)));
  Jump jump;
  EXPECT_FALSE(stage.control.GetPerformersJump(&jump));
  EXPECT_EQ(stage.control.Advance(200, 300), "300");
}

TEST(ResetControlVariables, ClearsTheOtherFlagsToo) {
  Stage stage(TestSong("1").Caesura(0));
  stage.control.Advance(0, 100);
  stage.control.ResetControlVariables();
  EXPECT_FALSE(stage.control.IsCaesuraStop());
  stage.control.Advance(1, 100);
  ASSERT_TRUE(stage.control.IsReplan());
  stage.control.ResetControlVariables();
  EXPECT_FALSE(stage.control.IsReplan());
}

TEST(ResetControlVariables, TouchesNeitherCountsNorPosition) {
  Stage stage(TestSong("1").Vamp(0, kBar));
  stage.control.GetLoop(kBar).done = 4;
  stage.control.MoveTo(700);
  stage.control.ResetControlVariables();
  EXPECT_EQ(stage.control.GetTickIndex(), 700U);
  EXPECT_EQ(stage.control.DescribeLoop(kBar), "0/4/0");
}

// ---- recovery --------------------------------------------------------------------------------------

TEST(RecoverySeek, MovesByTheBasePartOfTheJumpAlone) {
  Stage stage(TestSong("1"));
  EXPECT_EQ(Calls(stage.control, [&] { EXPECT_EQ(stage.control.RecoverySeek(960), 960U); }), "");
  EXPECT_EQ(stage.control.GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), 960U);
}

TEST(RecoverySeek, StaysWithinTheSong) {
  Stage stage(TestSong("1").AudioFrom(960).AudioTo(5000));
  EXPECT_EQ(stage.control.RecoverySeek(10), 960U);
  EXPECT_EQ(stage.control.GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.RecoverySeek(5000), 5000U);
  EXPECT_EQ(stage.control.RecoverySeek(6000), 5000U);
  EXPECT_EQ(stage.control.GetTickIndex(), 5000U);
}

TEST(RecoverySeek, BringsTheCuesBackThatLieAhead) {
  Stage stage(TestSong("1").Caesura(960).Vamp(1000, 2000));
  stage.control.Seek(5000);
  stage.control.RecoverySeek(960);
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (std::vector<unsigned>{960}));
  EXPECT_EQ(stage.control.GetLoopsAhead().size(), 1U);
}

TEST(RecoverySeek, IsWhereAPausedShowStands) {
  Stage stage(TestSong("1"));
  stage.control.RecoverySeek(960);
  EXPECT_EQ(stage.control.GetLastSeekTickIndex(), 960U);
}

}  // namespace
