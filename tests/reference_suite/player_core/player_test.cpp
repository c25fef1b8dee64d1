#include "suite/player_core/player.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "suite/player_core/content_argument.h"
#include "tests/reference_suite/player_core/support/position_listener.h"
#include "tests/reference_suite/player_core/support/stage.h"
#include "tests/support/wait_until.h"

namespace {

using test_support::kBar;
using test_support::PositionListener;
using test_support::Stage;
using test_support::TestPlayer;
using test_support::TestShow;
using test_support::TestSong;

unsigned At(unsigned bar) {
  return (bar - 1) * kBar;
}

TEST(Player, HoldsShowPathAndTheDecodersArgument) {
  TestShow show({TestSong("1")});
  player_core::SetContentArgument("rate=48000");
  const TestPlayer player(show, "some/show");
  player_core::SetContentArgument("");
  EXPECT_EQ(player.GetShowPath(), "some/show");
  EXPECT_EQ(player.GetContentArgument(), "rate=48000");  // of the time when it was made
  EXPECT_EQ(TestPlayer(show).GetContentArgument(), "");
}

TEST(Player, ItsStateIsStopUntilItIsSet) {
  Stage stage(TestSong("1"));
  EXPECT_EQ(stage.player.GetPlayerState(), PlayerState::STOP);
  stage.player.SetPlayerState(PlayerState::PAUSE);
  EXPECT_EQ(stage.player.GetPlayerState(), PlayerState::PAUSE);
  EXPECT_FALSE(stage.player.IsPlaying());
  stage.player.SetPlayerState(PlayerState::PLAY);
  EXPECT_TRUE(stage.player.IsPlaying());
}

TEST(Player, TheStatesHaveTheValuesThatTheSuiteKnows) {
  EXPECT_EQ(static_cast<int>(PlayerState::STOP), 1);
  EXPECT_EQ(static_cast<int>(PlayerState::PLAY), 2);
  EXPECT_EQ(static_cast<int>(PlayerState::PAUSE), 4);
}

TEST(Player, ItsLockIsRecursive) {
  Stage stage(TestSong("1"));
  exc::ScopeLock lock(stage.player);
  EXPECT_EQ(stage.player.IsContinuePending(), false);
}

TEST(Player, TheActiveSongIsSharedWithTheShowControl) {
  TestShow show({TestSong("1"), TestSong("2")});
  TestPlayer player(show);
  EXPECT_THROW((void)player.GetCurrentSongNumber(), std::out_of_range);
  player.SetActiveSongNumber("2");
  EXPECT_EQ(player.GetCurrentSongNumber(), "2");
  EXPECT_EQ(player.GetActiveSongNumberRef().Get(), "2");
}

TEST(Player, TheTickIsTheControlPosition) {
  Stage stage(TestSong("1"));
  stage.control.MoveTo(700);
  EXPECT_EQ(stage.player.GetTickIndex(), 700U);
}

TEST(Player, TheDisplayIsLeftAloneWhilePlaybackRunsAndItsUpdatesArePaused) {
  Stage stage(TestSong("1"));
  const PositionListener listener;
  stage.player.SetPlayerState(PlayerState::PLAY);
  stage.player.EnsureGuiIsCurrent();
  EXPECT_EQ(listener.GetTicks().size(), 0U);
  stage.player.SetPlayerState(PlayerState::PAUSE);
  stage.player.EnsureGuiIsCurrent();
  EXPECT_EQ(listener.GetTicks().size(), 1U);
  stage.player.SetPlayerState(PlayerState::PLAY);
  stage.player.GetGuiUpdate().Unpause();
  stage.player.EnsureGuiIsCurrent();
  EXPECT_EQ(listener.GetTicks().size(), 2U);
}

TEST(Player, CaesuraAndFermataAreTheShowControls) {
  Stage stage(TestSong("1").Caesura(0));
  EXPECT_TRUE(stage.player.HasPendingCaesura());
  EXPECT_FALSE(stage.player.GetFermataCanceledCaesura());
  stage.control.Advance(0, 100);
  bool isReached = false;
  stage.control.CancelCaesura(&isReached);
  EXPECT_FALSE(stage.player.HasPendingCaesura());
  EXPECT_TRUE(stage.player.GetFermataCanceledCaesura());
}

TEST(Player, JumpsAreTheShowControls) {
  Stage stage(TestSong("1").Vamp(0, At(5), CL::VampExit::NextBar).Cut(At(7), At(8)));
  Jump jump;
  EXPECT_FALSE(stage.player.GetJump(&jump));
  ASSERT_TRUE(stage.player.GetJumpForVampRepeatOrCut(&jump));
  EXPECT_EQ(jump.fromTick, At(5));
  EXPECT_TRUE(stage.player.FlowControlExit());
  ASSERT_TRUE(stage.player.GetJump(&jump));
  EXPECT_EQ(jump.fromTick, At(2));
  EXPECT_EQ(jump.toTick, At(5));
  stage.player.ClearJump();
  EXPECT_FALSE(stage.player.GetJump(&jump));
  ASSERT_TRUE(stage.player.GetJumpForVampRepeatOrCut(&jump));
  EXPECT_EQ(jump.fromTick, At(7));
  EXPECT_FALSE(stage.player.FlowControlExit());
}

TEST(Player, ASafetyIsRepeatedOnRequest) {
  Stage stage(TestSong("1").Safety(0, At(2)));
  EXPECT_TRUE(stage.player.RepeatSafety());
  EXPECT_EQ(stage.control.DescribeLoop(At(2)), "1/0/0");
}

TEST(Player, MakingTheShownPositionCurrentAsksOnce) {
  Stage stage(TestSong("1"));
  stage.player.audible = [](unsigned* tick) {
    *tick = 960;
    return false;
  };
  PositionListener listener;
  stage.player.EnsureGuiIsCurrent();
  EXPECT_EQ(listener.GetTicks(), (std::vector<unsigned>{960}));
}

TEST(Player, TellsListenersThatItWaitsAtACaesuraAndWhere) {
  Stage stage(TestSong("1").Caesura(960));
  PositionListener listener;
  stage.control.MoveTo(960);
  stage.control.OnCaesuraStop();
  stage.control.MoveTo(1400);  // the output has been refilled from there
  stage.player.GUINotifyCaesura();
  EXPECT_EQ(listener.GetCaesuras(), (std::vector<std::string>{"1@960"}));
}

// ---- the performer's go on a caesura ---------------------------------------------------------------

TEST(Continue, PausedAtACaesuraItPlays) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(960);
  stage.control.OnCaesuraStop();
  stage.player.StorePause();
  stage.control.MoveTo(1400);  // the output has been refilled from there
  EXPECT_TRUE(stage.player.Continue());
  EXPECT_EQ(stage.player.plays, 1);
}

TEST(Continue, PausedElsewhereItDoesNothing) {
  Stage stage(TestSong("1").Caesura(960));
  stage.player.SetPlayerState(PlayerState::PAUSE);
  EXPECT_FALSE(stage.player.Continue());
  EXPECT_EQ(stage.player.plays, 0);
  EXPECT_EQ(stage.control.GetCaesuraCountdown(), 960);
}

TEST(Continue, PausedAgainAfterACaesuraWasLeftItDoesNothing) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(960);
  stage.control.OnCaesuraStop();
  stage.player.StorePause();
  stage.player.SetPlayerState(PlayerState::PLAY);
  stage.player.SetPlayerState(PlayerState::PAUSE);
  EXPECT_FALSE(stage.player.Continue());
}

TEST(Continue, PausedAndSoughtAwayFromACaesuraItDoesNothing) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(960);
  stage.control.OnCaesuraStop();
  stage.player.StorePause();
  stage.control.Seek(0);
  EXPECT_FALSE(stage.player.Continue());
}

TEST(Continue, StoppedItDoesNothing) {
  Stage stage(TestSong("1").Caesura(960));
  EXPECT_FALSE(stage.player.Continue());
  EXPECT_EQ(stage.control.GetCaesuraCountdown(), 960);
}

TEST(Continue, PlayingACaesuraWithinABarIsPassedBy) {
  Stage stage(TestSong("1").Bars(3).Caesura(960).Caesura(At(3)));
  stage.player.SetPlayerState(PlayerState::PLAY);
  EXPECT_TRUE(stage.player.Continue());
  EXPECT_FALSE(stage.player.IsContinuePending());
  EXPECT_FALSE(stage.player.GetFermataCanceledCaesura());
  EXPECT_EQ(stage.control.Perform(), "0..3840 caesura");
}

TEST(Continue, PlayingACaesuraThatTheReadsHaveReachedIsPassedThrough) {
  Stage stage(TestSong("1").Bars(3).Caesura(960));
  stage.player.SetPlayerState(PlayerState::PLAY);
  ASSERT_EQ(stage.control.Perform(), "0..960 caesura");
  EXPECT_TRUE(stage.player.Continue());
  EXPECT_TRUE(stage.player.IsContinuePending());
  EXPECT_TRUE(stage.player.GetFermataCanceledCaesura());
  EXPECT_EQ(stage.player.plays, 0);  // the output goes on by itself
}

// Says go on a thread of its own, and is doing so when it has been made.
class ContinuingHost {
 public:
  explicit ContinuingHost(TestPlayer* player)
      : thread_([this, player] {
          isAsking_ = true;
          hasContinued_ = player->Continue();
        }) {
    EXPECT_TRUE(test_support::WaitUntil([this] { return isAsking_.load(); }));
  }
  // Waits for the answer.
  bool HasContinued() {
    thread_.join();
    return hasContinued_;
  }

 private:
  std::atomic<bool> isAsking_{false};
  bool hasContinued_ = false;
  std::thread thread_;
};

// The go comes when the player has already decided to stop, and has not yet paused.
TEST(Continue, WhilePlaybackIsStoppingItGoesOnAfterwards) {
  Stage stage(TestSong("1").Bars(3).Caesura(960).Caesura(1440));
  stage.player.SetPlayerState(PlayerState::PLAY);
  ASSERT_EQ(stage.control.Perform(), "0..960 caesura");
  ASSERT_FALSE(stage.control.GetFermataCanceledCaesura());
  stage.control.ClearFermataCanceledCaesura();
  ContinuingHost host(&stage.player);
  stage.control.OnCaesuraStop();
  stage.player.StorePause();
  EXPECT_TRUE(host.HasContinued());
  EXPECT_EQ(stage.player.plays, 1);
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (std::vector<unsigned>{1440}));
}

TEST(Continue, WhilePlaybackIsPassingThroughThereIsNothingToAdd) {
  Stage stage(TestSong("1").Bars(3).Caesura(960).Caesura(1440));
  stage.player.SetPlayerState(PlayerState::PLAY);
  ASSERT_EQ(stage.control.Perform(), "0..960 caesura");
  stage.control.OnCaesuraStop();
  ContinuingHost host(&stage.player);
  stage.player.StorePause();
  stage.player.SetPlayerState(PlayerState::PLAY);
  EXPECT_TRUE(host.HasContinued());
}

TEST(Continue, AStopThatNeverEndsDoesNotHoldTheHost) {
  Stage stage(TestSong("1").Caesura(960));
  stage.player.SetPlayerState(PlayerState::PLAY);
  ASSERT_EQ(stage.control.Perform(), "0..960 caesura");
  stage.control.OnCaesuraStop();
  EXPECT_FALSE(stage.player.Continue());
}

TEST(Continue, PlayingWithNoCaesuraWithinABarItDoesNothing) {
  Stage stage(TestSong("1").Caesura(At(4)));
  stage.player.SetPlayerState(PlayerState::PLAY);
  EXPECT_FALSE(stage.player.Continue());
  EXPECT_FALSE(stage.player.IsContinuePending());
}

TEST(Continue, StartingToPlayForgetsWhatWasAskedForBefore) {
  Stage stage(TestSong("1"));
  stage.player.SetContinuePending(true);
  stage.player.SetPlayerState(PlayerState::PAUSE);
  EXPECT_TRUE(stage.player.IsContinuePending());
  stage.player.SetPlayerState(PlayerState::PLAY);
  EXPECT_FALSE(stage.player.IsContinuePending());
}

TEST(Continue, AnotherSongForgetsWhatWasAskedForInTheOneBefore) {
  Stage stage(TestSong("1"));
  stage.player.SetContinuePending(true);
  stage.player.SetActiveSongNumber("1");
  EXPECT_FALSE(stage.player.IsContinuePending());
}

TEST(Continue, ARecoveryForgetsWhatWasAskedForBefore) {
  Stage stage(TestSong("1"));
  stage.player.SetContinuePending(true);
  stage.player.ResetForRecovery();
  EXPECT_FALSE(stage.player.IsContinuePending());
  stage.player.SetContinuePending(true);
  stage.player.ResetForRecoveryAdvance();
  EXPECT_FALSE(stage.player.IsContinuePending());
}

// ---- bar by bar ------------------------------------------------------------------------------------

std::vector<unsigned> NextFrom(Stage& stage, unsigned shown) {
  stage.player.seeks.clear();
  stage.player.GetGuiUpdate().ResetAndSeekToTickIndex(shown);
  stage.player.SeekToNextMeasure();
  return stage.player.seeks;
}

std::vector<unsigned> PreviousFrom(Stage& stage, unsigned shown) {
  stage.player.seeks.clear();
  stage.player.GetGuiUpdate().ResetAndSeekToTickIndex(shown);
  stage.player.SeekToPreviousMeasure();
  return stage.player.seeks;
}

using Ticks = std::vector<unsigned>;

TEST(Measures, TheNextOneIsTheNextBarLine) {
  Stage stage(TestSong("1").Bars(4));
  EXPECT_EQ(NextFrom(stage, 0), (Ticks{At(2)}));
  EXPECT_EQ(NextFrom(stage, At(2) - 1), (Ticks{At(2)}));
  EXPECT_EQ(NextFrom(stage, At(2)), (Ticks{At(3)}));
}

TEST(Measures, TheLastBarHasNoNextOne) {
  Stage stage(TestSong("1").Bars(4));
  EXPECT_EQ(NextFrom(stage, At(4)), Ticks{});
  Stage shorter(TestSong("1").Bars(4).AudioTo(At(3)));
  EXPECT_EQ(NextFrom(shorter, At(2)), Ticks{});
}

TEST(Measures, ThePreviousOneIsTheStartOfThisBar) {
  Stage stage(TestSong("1").Bars(4));
  EXPECT_EQ(PreviousFrom(stage, At(3) + 480), (Ticks{At(3)}));
}

TEST(Measures, LessThanABeatIntoTheBarItIsTheOneBefore) {
  Stage stage(TestSong("1").Bars(4));
  EXPECT_EQ(PreviousFrom(stage, At(3) + 479), (Ticks{At(2)}));
  EXPECT_EQ(PreviousFrom(stage, At(3)), (Ticks{At(2)}));
  EXPECT_EQ(PreviousFrom(stage, 0), (Ticks{0}));
}

TEST(Measures, WithoutASongThereIsNothingToMoveIn) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  player.SeekToNextMeasure();
  player.SeekToPreviousMeasure();
  EXPECT_TRUE(player.seeks.empty());
}

}  // namespace
