#include <gtest/gtest.h>

#include <algorithm>

#include <stdexcept>

#include "exc/assertion/ex_assertion_error.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

constexpr char kRunningAssertion[] =
    "Assertion failed: !(this->audioSampleOutput_->GetOutputIsRunning()), function DoSeek_, file "
    "Sources/audio_player, line 927.";

class Seeking : public PlayerTest {
 protected:
  // Paused, and yet the output runs: it plays out what it has.
  void PauseWithARunningOutput() {
    LoadAndPlay("1");
    GetPlayer().Pause();
    Output().SetRunning(true);
    Told();
  }
};

TEST_F(Seeking, WhileStoppedMovesRefillsAndShows) {
  LoadReady("1");
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960", "control.ResetGuiUpdate", "output.Refill",
                             "player.EnsureGuiIsCurrent"}));
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek());
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
}

TEST_F(Seeking, WhilePausedMovesRefillsAndShows) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  GetPlayer().GetSeekRequestedWhileNotPlay();
  Told();
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960", "control.ResetGuiUpdate", "output.Refill",
                             "player.EnsureGuiIsCurrent"}));
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
  EXPECT_FALSE(GetPlayer().GetSeekRequestedWhileNotPlay()) << "read once";
}

// What is on its way to the listener goes on; the elapsed count runs on with it.
TEST_F(Seeking, WhilePlayingMovesAndShowsWithoutARefill) {
  LoadAndPlay("1");
  GetPlayer().GetSeekRequestedWhileNotPlay();
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960", "player.EnsureGuiIsCurrent"}));
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek());
  EXPECT_FALSE(GetPlayer().GetSeekRequestedWhileNotPlay());
}

TEST_F(Seeking, WhileStoppedForgetsWhatWasRegistered) {
  LoadReady("1");
  GetPlayer().Seek(960);
  GetPlayer().Play();
  const test_support::CoutCapture console;
  unsigned tick = 7;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 0u);
  EXPECT_EQ(console.Text(),
            "[Warning] SamplesTicksConverter::tickIndexByElapsedSampleCount_ is empty. Returning 0.\n");
}

TEST_F(Seeking, BeyondTheEndOfTheSongChangesNothing) {
  LoadReady("1");
  GetPlayer().Seek(9601);
  EXPECT_EQ(Told(), (Journal{}));
  GetPlayer().Seek(9600);
  EXPECT_EQ(Told().front(), "control.Seek 9600");
}

TEST_F(Seeking, NothingMoreIsDoneWhenTheShowControlMovedNothing) {
  LoadReady("1");
  fakes::show_control::AnswerSeek(true);
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960"}));
}

TEST_F(Seeking, TheOutputsSeekFlagIsSetWhileThePositionMoves) {
  LoadAndPlay("1");
  bool wasSet = false;
  fakes::show_control::OnSeek([&] { wasSet = Output().GetSeekFlag().GetIsSet(); });
  EXPECT_FALSE(Output().GetSeekFlag().GetIsSet());
  GetPlayer().Seek(960);
  EXPECT_TRUE(wasSet);
  EXPECT_FALSE(Output().GetSeekFlag().GetIsSet());
}

TEST_F(Seeking, TheOutputsSeekFlagIsCancelledWhenTheSeekThrows) {
  LoadAndPlay("1");
  fakes::show_control::OnSeek([] { throw std::runtime_error("no such place"); });
  EXPECT_TRUE(
      test_support::ThrowsWithText<std::runtime_error>([&] { GetPlayer().Seek(960); }, "no such place"));
  EXPECT_FALSE(Output().GetSeekFlag().GetIsSet());
}

TEST_F(Seeking, NoLockIsHeldWhileTheOutputIsWaitedFor) {
  PauseWithARunningOutput();
  int seen = 0;
  Output().OnCall([&](const std::string& call) {
    if (call != "Stop(true)" && call != "Refill") return;
    ++seen;
    EXPECT_TRUE(PlayerLockIsFree()) << call;
  });
  GetPlayer().Seek(960);
  Output().OnCall(nullptr);
  EXPECT_EQ(seen, 2);
}

TEST_F(Seeking, WhilePausedStopsAnOutputThatStillRuns) {
  PauseWithARunningOutput();
  GetPlayer().Seek(960);
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)", "control.Seek 960", "control.ResetGuiUpdate",
                             "output.Refill", "player.EnsureGuiIsCurrent"}));
}

TEST_F(Seeking, AsksAnOutputThatStillRunsUpToElevenTimes) {
  PauseWithARunningOutput();
  Output().RefuseStops(10);
  const test_support::CoutCapture console;
  GetPlayer().Seek(960);
  const Journal told = Told();
  EXPECT_EQ(std::count(told.begin(), told.end(), "output.Stop(true)"), 11);
  EXPECT_EQ(std::count(told.begin(), told.end(), "control.Seek 960"), 1);
  EXPECT_EQ(console.Text(), "");
}

// Whoever is asked to seek on this thread can tell whose seek it is.
TEST_F(Seeking, IsKnownAsTheUsersBeforeThePositionMoves) {
  LoadReady("1");
  bool wasUsers = false;
  fakes::show_control::OnSeek([&] { wasUsers = GetPlayer().GetUserRequestedSeek(); });
  GetPlayer().Seek(960);
  EXPECT_TRUE(wasUsers);
}

TEST_F(Seeking, IsGivenUpAfterElevenRefusals) {
  PauseWithARunningOutput();
  GetPlayer().GetSeekRequestedWhileNotPlay();
  Output().RefuseStops(11);
  const test_support::CoutCapture console;
  GetPlayer().Seek(960);
  EXPECT_EQ(console.Text(), "Unable to stop playback to complete seek.\n");
  const Journal told = Told();
  EXPECT_EQ(told, Journal(11, "output.Stop(true)"));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PAUSE);
  EXPECT_TRUE(GetPlayer().GetStopRequested()) << "the request stays";
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay()) << "it was asked for all the same";
  Output().SetRunning(false);
}

TEST_F(Seeking, ThatWasGivenUpIsNotMadeWhenTheOutputStopsAfterAll) {
  PauseWithARunningOutput();
  Output().RefuseStops(11);
  int stops = 0;
  Output().OnCall([&](const std::string& call) {
    if (call == "Stop(true)" && ++stops == 11) Output().SetRunning(false);
  });
  const test_support::CoutCapture console;
  GetPlayer().Seek(960);
  Output().OnCall(nullptr);
  EXPECT_EQ(console.Text(), "Unable to stop playback to complete seek.\n");
  EXPECT_EQ(Told(), Journal(11, "output.Stop(true)"));
}

TEST_F(Seeking, IsGivenUpWithoutAWordWhenAPausedOutputRunsAllTheSame) {
  PauseWithARunningOutput();
  Output().IgnoreStops(true);
  const test_support::CoutCapture console;
  GetPlayer().Seek(960);
  EXPECT_EQ(console.Text(), "");
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)"}));
  Output().SetRunning(false);
}

TEST_F(Seeking, IsGivenUpAfterALoadThatFailed) {
  LoadReadyWithBrokenNeighbour("1", "2", fakes::decoder::ErrorKind::Audio, "cannot open");
  GetPlayer().GetSeekRequestedWhileNotPlay();
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{}));
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay()) << "it was asked for all the same";
}

TEST_F(Seeking, WhilePausedStopsAnOutputThatStillRunsAlsoAfterALoadThatFailed) {
  fakes::show_control::Skip("2");
  LoadAndPlay("1");
  GetPlayer().Pause();
  fakes::decoder::FailDecode(Path("2"), fakes::decoder::ErrorKind::Audio, "cannot open");
  fakes::show_control::SkipNothing();
  GetPlayer().SetAttaccaState("1", 1);
  ASSERT_TRUE(AwaitLoaders());
  ASSERT_TRUE(GetPlayer().GetFileLoaderErrorOccurred());
  Output().SetRunning(true);
  Told();
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)"}));
}

TEST_F(Seeking, WithARunningOutputWhileStoppedIsAFault) {
  LoadReady("1");
  Output().SetRunning(true);
  EXPECT_TRUE(
      test_support::ThrowsWithText<exc::ExAssertionError>([&] { GetPlayer().Seek(960); }, kRunningAssertion));
  EXPECT_EQ(Told(), (Journal{"control.Seek 960"}));
  EXPECT_FALSE(Output().GetSeekFlag().GetIsSet());
  Output().SetRunning(false);
}

TEST_F(Seeking, WithoutAnOutputDoesTheRestOfItsWork) {
  LoadReady("1");
  GetPlayer().Shutdown();
  Told();
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960", "control.ResetGuiUpdate", "player.EnsureGuiIsCurrent"}));
}

TEST_F(Seeking, LeftAndRightGoWhereTheShowControlSays) {
  LoadReady("1");
  fakes::show_control::SetSeekLeft(480);
  fakes::show_control::SetSeekRight(1440);
  GetPlayer().SeekLeft();
  EXPECT_EQ(Told().front(), "control.Seek 480");
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek());
  GetPlayer().SeekRight();
  EXPECT_EQ(Told().front(), "control.Seek 1440");
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek());
}

TEST_F(Seeking, LeftLetsExceptionsThrough) {
  LoadReady("1");
  fakes::show_control::FailSeekLeft("nothing to the left");
  EXPECT_TRUE(test_support::ThrowsWithText<std::out_of_range>([&] { GetPlayer().SeekLeft(); },
                                                              "nothing to the left"));
  EXPECT_FALSE(GetPlayer().GetUserRequestedSeek());
}

TEST_F(Seeking, LeftLetsAFaultOfTheSeekThrough) {
  LoadReady("1");
  Output().SetRunning(true);
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>([&] { GetPlayer().SeekLeft(); },
                                                                  kRunningAssertion));
  Output().SetRunning(false);
}

TEST_F(Seeking, RightNeverThrowsWhenThereIsNoPlaceToTheRight) {
  LoadReady("1");
  fakes::show_control::FailSeekRight("nothing to the right");
  EXPECT_NO_THROW(GetPlayer().SeekRight());
  EXPECT_FALSE(GetPlayer().GetUserRequestedSeek());
}

TEST_F(Seeking, RightNeverThrowsWhenTheSeekDoes) {
  LoadReady("1");
  Output().SetRunning(true);
  EXPECT_NO_THROW(GetPlayer().SeekRight());
  fakes::show_control::OnSeek([] { throw 7; });
  EXPECT_NO_THROW(GetPlayer().SeekRight());
  Output().SetRunning(false);
}

}  // namespace
