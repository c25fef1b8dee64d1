#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>
#include <vector>

#include "exc/assertion/ex_assertion_error.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/fake_player.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/cout_capture.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/throws_with_text.h"

namespace {

class Transport : public PlayerTest {
 protected:
  // A neighbour cannot be decoded: from then on the player refuses to play.
  void LoadWithABrokenNeighbour() {
    LoadReadyWithBrokenNeighbour("1", "2", fakes::decoder::ErrorKind::OggVorbis, "bad page");
  }
  int CountStops() {
    const Journal calls = Told("output");
    return static_cast<int>(std::count(calls.begin(), calls.end(), "output.Stop(true)"));
  }
  PlayerState State() { return GetPlayer().GetPlayerState(); }
  // Whether a continue asked for earlier is still pending: it lets a caesura be passed through.
  bool ContinueIsPending() { return AsOutputSees().OnCaesuraStop(); }
  // The output has stopped by itself; whoever tells of it waits for what is under way.
  std::thread TellOfAStopThatWaits() {
    std::atomic<pid_t> id{0};
    std::thread render([this, &id] {
      id = test_support::ThisThread();
      AsOutputSees().NotifyOutputHasStopped();
    });
    while (id == 0) std::this_thread::yield();
    EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
    return render;
  }
};

// ---- Play ------------------------------------------------------------------------------------------

TEST_F(Transport, PlayStartsTheOutputAndTellsTheUserInterface) {
  LoadReady("1");
  GetPlayer().Play();
  EXPECT_EQ(State(), PlayerState::PLAY);
  EXPECT_EQ(Told(), (Journal{"output.Start", "notify.PlaybackStarted", "gui.Unpause"}));
}

TEST_F(Transport, PlayWhilePlayingTellsAgainWithoutStartingAgain) {
  LoadAndPlay("1");
  GetPlayer().Play();
  EXPECT_EQ(Told(), (Journal{"notify.PlaybackStarted", "gui.Unpause"}));
}

TEST_F(Transport, PlayFromPauseStartsTheOutput) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  Told();
  GetPlayer().Play();
  EXPECT_EQ(State(), PlayerState::PLAY);
  EXPECT_EQ(Told(), (Journal{"output.Start", "notify.PlaybackStarted", "gui.Unpause"}));
}

TEST_F(Transport, PlayAfterALoadThatFailedSendsTheExceptionAndPlaysNothing) {
  LoadWithABrokenNeighbour();
  GetPlayer().Play();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{"notify.PlayerException"}));
}

TEST_F(Transport, PlaySetsTheStateBeforeItStartsTheOutputAndHoldsNoLock) {
  LoadReady("1");
  PlayerState state = PlayerState::STOP;
  bool wasFree = false;
  Output().OnCall([&](const std::string& call) {
    if (call != "Start") return;
    state = State();
    wasFree = PlayerLockIsFree();
  });
  GetPlayer().Play();
  Output().OnCall(nullptr);
  EXPECT_EQ(state, PlayerState::PLAY);
  EXPECT_TRUE(wasFree);
}

TEST_F(Transport, PlayWithoutAnOutputDoesTheRestOfItsWork) {
  MakePlayer();
  Told();
  GetPlayer().Play();
  EXPECT_EQ(State(), PlayerState::PLAY);
  EXPECT_EQ(Told(), (Journal{"notify.PlaybackStarted", "gui.Unpause"}));
}

// ---- Pause -----------------------------------------------------------------------------------------

TEST_F(Transport, PausePausesTheOutputAndTellsTheUserInterface) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  EXPECT_EQ(State(), PlayerState::PAUSE);
  EXPECT_EQ(Told(), (Journal{"output.Pause", "notify.PlaybackPaused"}));
}

TEST_F(Transport, PauseWhileStoppedDoesNothingAndSendsNothing) {
  LoadReady("1");
  GetPlayer().Pause();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(Transport, PauseWhilePausedDoesNothingAndSendsNothing) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  Told();
  GetPlayer().Pause();
  EXPECT_EQ(State(), PlayerState::PAUSE);
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(Transport, PauseWithoutAnOutputDoesTheRestOfItsWork) {
  MakePlayer();
  GetPlayer().Play();
  Told();
  GetPlayer().Pause();
  EXPECT_EQ(State(), PlayerState::PAUSE);
  EXPECT_EQ(Told(), (Journal{"notify.PlaybackPaused"}));
}

// One step: the output that stops by itself has to wait for it.
TEST_F(Transport, ASongThatEndsDuringAPauseStaysStopped) {
  LoadAndPlay("1");
  std::thread render;
  fakes::player::OnSetState([&](PlayerState pause) {
    fakes::player::OnSetState(nullptr);
    EXPECT_EQ(pause, PlayerState::PAUSE);
    render = TellOfAStopThatWaits();
    EXPECT_EQ(State(), PlayerState::PLAY);
  });
  GetPlayer().Pause();
  render.join();
  EXPECT_EQ(State(), PlayerState::STOP);
}

// The render thread starts again at a caesura that is passed through, or behind a stop.
TEST_F(Transport, APauseThatComesToTheOutputBehindAPlayLeavesItPlaying) {
  LoadAndPlay("1");
  bool isFirst = true;
  Output().OnCall([&](const std::string& call) {
    if (call != "Pause" || !std::exchange(isFirst, false)) return;
    std::thread([&] { GetPlayer().Play(); }).join();
  });
  GetPlayer().Pause();
  Output().OnCall(nullptr);
  EXPECT_EQ(State(), PlayerState::PLAY);
  EXPECT_TRUE(Output().GetOutputIsRunning());
  const Journal told = Told("notify");
  EXPECT_EQ(told, (Journal{"notify.PlaybackStarted"})) << "it is not paused";
}

// One step: else the output would play for a player that takes itself for stopped.
TEST_F(Transport, AStopIsToldBeforeOrBehindAStartAndNotInTheMiddle) {
  LoadReady("1");
  std::thread render;
  Output().OnCall([&](const std::string& call) {
    if (call != "Start") return;
    render = TellOfAStopThatWaits();
    EXPECT_EQ(State(), PlayerState::PLAY);
  });
  GetPlayer().Play();
  render.join();
  Output().OnCall(nullptr);
  EXPECT_EQ(State(), PlayerState::STOP);
}

TEST_F(Transport, EveryChangeOfStateGoesThroughTheBase) {
  using States = std::vector<PlayerState>;
  LoadReady("1");
  fakes::player::TakeStatesSet();
  GetPlayer().Play();
  EXPECT_EQ(fakes::player::TakeStatesSet(), (States{PlayerState::PLAY}));
  GetPlayer().Play();
  EXPECT_EQ(fakes::player::TakeStatesSet(), (States{})) << "it plays already";
  GetPlayer().Pause();
  EXPECT_EQ(fakes::player::TakeStatesSet(), (States{PlayerState::PAUSE}));
  GetPlayer().Pause();
  EXPECT_EQ(fakes::player::TakeStatesSet(), (States{})) << "it does not play";
  Output().RefuseStops(1);
  GetPlayer().Stop();
  EXPECT_EQ(fakes::player::TakeStatesSet(), (States{PlayerState::STOP})) << "from pause at once";
  Output().SetRunning(false);
  GetPlayer().Play();
  fakes::player::TakeStatesSet();
  AsOutputSees().NotifyOutputHasStopped();
  EXPECT_EQ(fakes::player::TakeStatesSet(), (States{PlayerState::STOP})) << "the output reports";
}

// ---- Stop ------------------------------------------------------------------------------------------

TEST_F(Transport, StopWhilePlayingIsNoEndOfSong) {
  LoadAndPlay("1");
  GetPlayer().Stop();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)"}));
  EXPECT_FALSE(GetPlayer().GetStopRequested());
}

TEST_F(Transport, StopWhilePlayingStaysPlayUntilTheOutputReports) {
  LoadAndPlay("1");
  Output().RefuseStops(1);
  GetPlayer().Stop();
  EXPECT_EQ(State(), PlayerState::PLAY);
  EXPECT_TRUE(GetPlayer().GetStopRequested());
  Output().ReportStop();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_FALSE(GetPlayer().GetStopRequested());
  EXPECT_EQ(Told("notify"), (Journal{}));
}

TEST_F(Transport, StopWhilePausedEndsInStopAtOnce) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  Told();
  Output().RefuseStops(1);
  GetPlayer().Stop();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)"}));
}

TEST_F(Transport, StopWhileStoppedDoesNothing) {
  LoadReady("1");
  GetPlayer().Stop();
  EXPECT_EQ(Told(), (Journal{}));
  EXPECT_FALSE(GetPlayer().GetStopRequested());
}

TEST_F(Transport, StopWhileStoppedWithARunningOutputIsAFault) {
  LoadReady("1");
  Output().SetRunning(true);
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { GetPlayer().Stop(); },
      "Assertion failed: !(this->audioSampleOutput_->GetOutputIsRunning()), function Stop, file "
      "Sources/audio_player, line 991."));
  Output().SetRunning(false);
}

// A loader may start playback between the two looks that a stop takes.
TEST_F(Transport, StopStopsPlaybackThatBeginsAtThisMoment) {
  LoadReady("1");
  bool isFirst = true;
  Output().OnCall([&](const std::string& call) {
    if (call != "GetOutputIsRunning" || !std::exchange(isFirst, false)) return;
    std::thread([&] { GetPlayer().Play(); }).join();
  });
  GetPlayer().Stop();
  Output().OnCall(nullptr);
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told("output"), (Journal{"output.Start", "output.Stop(true)"}));
}

TEST_F(Transport, StopWithoutAnOutputStopsAtOnceAndIsNoEndOfSong) {
  MakePlayer();
  GetPlayer().Stop();
  GetPlayer().Play();
  Told();
  GetPlayer().Stop();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_FALSE(GetPlayer().GetStopRequested());
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(Transport, StopHoldsNoLockWhileTheOutputIsWaitedFor) {
  LoadAndPlay("1");
  bool wasFree = false;
  Output().OnCall([&](const std::string& call) {
    if (call == "Stop(true)") wasFree = PlayerLockIsFree();
  });
  GetPlayer().Stop();
  Output().OnCall(nullptr);
  EXPECT_TRUE(wasFree);
}

// ---- StopAndReset ----------------------------------------------------------------------------------

TEST_F(Transport, StopAndResetStopsARunningOutputAndResets) {
  LoadAndPlay("1");
  GetPlayer().StopAndReset();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)", "control.FullReset", "output.Refill",
                             "player.EnsureGuiIsCurrent"}));
}

TEST_F(Transport, StopAndResetWhilePausedResetsAndStaysPaused) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  Told();
  GetPlayer().StopAndReset();
  EXPECT_EQ(State(), PlayerState::PAUSE) << "a paused output does not run";
  EXPECT_EQ(Told(), (Journal{"control.FullReset", "output.Refill", "player.EnsureGuiIsCurrent"}));
}

TEST_F(Transport, StopAndResetWhileStoppedOnlyResets) {
  LoadReady("1");
  GetPlayer().StopAndReset();
  EXPECT_EQ(Told(), (Journal{"control.FullReset", "output.Refill", "player.EnsureGuiIsCurrent"}));
}

// A player of a class of its own may stop and reset in its own way.
class OwnWay : public AudioPlayer {
 public:
  using AudioPlayer::AudioPlayer;
  void Stop() override { fakes::Write("own.Stop"); }
  void ResetPlayer() override { fakes::Write("own.ResetPlayer"); }
};

TEST_F(Transport, StopAndResetGoesThroughTheVirtualOperations) {
  test_support::deleter_clock::Hold();
  TakePlayer(std::make_unique<OwnWay>("/show", show_, &changeLog_, AudioFiles()));
  LoadReady("1");
  GetPlayer().Play();
  Told();
  GetPlayer().StopAndReset();
  EXPECT_EQ(Told(), (Journal{"own.Stop", "own.ResetPlayer"}));
  DestroyOwnPlayer();
}

// ---- ResetPlayer -----------------------------------------------------------------------------------

TEST_F(Transport, ResetWhileStoppedResetsTheShowControlAndRefills) {
  LoadReady("1");
  GetPlayer().ResetPlayer();
  EXPECT_EQ(Told(), (Journal{"control.FullReset", "output.Refill", "player.EnsureGuiIsCurrent"}));
}

TEST_F(Transport, ResetIsNeitherRefilledNorShownWhenTheShowControlMovedNothing) {
  LoadReady("1");
  fakes::show_control::AnswerFullReset(true);
  GetPlayer().ResetPlayer();
  EXPECT_EQ(Told(), (Journal{"control.FullReset"}));
}

TEST_F(Transport, ResetStopsARunningOutputFirst) {
  LoadAndPlay("1");
  GetPlayer().ResetPlayer();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)", "control.FullReset", "output.Refill",
                             "player.EnsureGuiIsCurrent"}));
}

TEST_F(Transport, ResetAsksTheOutputToStopUpToElevenTimes) {
  LoadAndPlay("1");
  Output().RefuseStops(10);
  const test_support::CoutCapture console;
  GetPlayer().ResetPlayer();
  const Journal told = Told();
  EXPECT_EQ(std::count(told.begin(), told.end(), "output.Stop(true)"), 11);
  EXPECT_EQ(told.back(), "player.EnsureGuiIsCurrent") << "the eleventh was carried out";
  EXPECT_EQ(console.Text(), "");
}

TEST_F(Transport, ResetGivesUpAfterElevenRefusalsAndLeavesEverythingElse) {
  LoadAndPlay("1");
  GetPlayer().GetSeekRequestedWhileNotPlay();
  Output().RefuseStops(11);
  const test_support::CoutCapture console;
  GetPlayer().ResetPlayer();
  EXPECT_EQ(CountStops(), 11);
  EXPECT_EQ(console.Text(),
            "[WARNING] ResetPlayer was called while output was running. Unable to stop output.\n");
  EXPECT_EQ(State(), PlayerState::PLAY);
  EXPECT_TRUE(GetPlayer().GetStopRequested()) << "the request stays";
  EXPECT_FALSE(GetPlayer().GetSeekRequestedWhileNotPlay());
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(Transport, ResetClearsThePositionStateAndAsksForASeek) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  GetPlayer().LoadNextSongAttacca();
  GetPlayer().Continue();
  GetPlayer().SetStopRequested(true);
  GetPlayer().SetUserRequestedSeek(true);
  GetPlayer().GetSeekRequestedWhileNotPlay();
  Output().SetRunning(false);
  GetPlayer().ResetPlayer();
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek()) << "no part of the position";
  EXPECT_FALSE(GetPlayer().GetStopRequested());
  EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_FALSE(ContinueIsPending());
}

TEST_F(Transport, ResetForgetsTheHoldOfAnAttaccaAndTheShownTick) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  Output().SetElapsedSampleCount(221);
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 10u);
  GetPlayer().LoadNextSongAttacca();
  Output().SetRunning(false);
  GetPlayer().ResetPlayer();
  Output().SetElapsedSampleCount(441);
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 20u) << "converted, not held";
}

TEST_F(Transport, AfterAResetTheStartOfTheSongIsHeardAtOnce) {
  SetSong("2", 480, 9600);
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  GetPlayer().LoadNextSongAttacca();
  Output().SetRunning(false);
  GetPlayer().ResetPlayer();
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 480u) << "not the tick that an attacca held";
}

// The shown tick is 0 again: an approaching stop leaves it there.
TEST_F(Transport, ResetSetsTheShownTickTo0) {
  LoadAndPlay("1");
  Output().SetElapsedSampleCount(221);
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 10u);
  GetPlayer().ResetPlayer();
  GetPlayer().Play();
  GetPlayer().GetShowControl().DoSkipAhead(2000);
  AsOutputSees().NotifyApproachingStop();
  Output().SetElapsedSampleCount(221);
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 0u);
}

TEST_F(Transport, ResetSeedsTheRegistryAtTheAudioStart) {
  SetSong("1", 480, 9600);
  LoadAndPlay("1");
  Output().SetElapsedSampleCount(221);
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 490u);
}

TEST_F(Transport, AResetHoldsUpAnAttacca) {
  LoadAndPlay("1");
  std::thread render;
  std::atomic<pid_t> renderId{0};
  fakes::show_control::OnFullReset([&] {
    fakes::show_control::OnFullReset(nullptr);
    render = std::thread([&] {
      renderId = test_support::ThisThread();
      GetPlayer().LoadNextSongAttacca();
    });
    while (renderId == 0) std::this_thread::yield();
    EXPECT_TRUE(test_support::WaitUntilItSleeps(renderId)) << "it waits for this thread";
    EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), "1");
  });
  GetPlayer().ResetPlayer();
  render.join();
  EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), "2");
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Transport, ResetHoldsNoLockWhileItRefills) {
  LoadAndPlay("1");
  int seen = 0;
  Output().OnCall([&](const std::string& call) {
    if (call != "Refill" && call != "Stop(true)") return;
    ++seen;
    EXPECT_TRUE(PlayerLockIsFree()) << call;
  });
  GetPlayer().ResetPlayer();
  Output().OnCall(nullptr);
  EXPECT_EQ(seen, 2);
}

TEST_F(Transport, ResetWithoutAnOutputDoesTheRestOfItsWork) {
  LoadReady("1");
  GetPlayer().Shutdown();
  Told();
  GetPlayer().ResetPlayer();
  EXPECT_EQ(Told(), (Journal{"control.FullReset", "player.EnsureGuiIsCurrent"}));
}

// ---- ResetPlayerNoFillBuffers ------------------------------------------------------------------------

TEST_F(Transport, TheShortResetNeitherStopsNorRefills) {
  LoadAndPlay("1");
  GetPlayer().ResetPlayerNoFillBuffers();
  EXPECT_EQ(State(), PlayerState::PLAY);
  EXPECT_EQ(Told(), (Journal{"control.FullReset"}));
}

TEST_F(Transport, TheShortResetIgnoresThatNothingMoved) {
  LoadReady("1");
  fakes::show_control::AnswerFullReset(true);
  GetPlayer().ResetPlayerNoFillBuffers();
  EXPECT_EQ(Told(), (Journal{"control.FullReset"}));
}

TEST_F(Transport, TheShortResetForgetsAContinueAndAsksForASeekAndTouchesNoOtherFlag) {
  LoadAndPlay("1");
  GetPlayer().LoadNextSongAttacca();
  GetPlayer().Continue();
  GetPlayer().SetStopRequested(true);
  GetPlayer().SetUserRequestedSeek(true);
  GetPlayer().GetSeekRequestedWhileNotPlay();
  GetPlayer().ResetPlayerNoFillBuffers();
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
  EXPECT_TRUE(GetPlayer().GetStopRequested());
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek());
  EXPECT_TRUE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_FALSE(ContinueIsPending());
}

TEST_F(Transport, TheShortResetSeedsTheRegistry) {
  LoadAndPlay("1");
  GetPlayer().LoadNextSongAttacca();
  AsOutputSees().ResetForRecovery(2205, 0);  // tick 100 is heard at 0
  GetPlayer().ResetPlayerNoFillBuffers();
  unsigned tick = 0;
  Output().SetElapsedSampleCount(12);  // 0.54 ticks
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 1u) << "counted from sample 0";
  Output().SetElapsedSampleCount(221);
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 10u);
}

// Otherwise this would wait for ever.
TEST_F(Transport, TheShortResetDoesNotHoldUpAnAttacca) {
  LoadAndPlay("1");
  fakes::show_control::OnFullReset([&] { std::thread([&] { GetPlayer().LoadNextSongAttacca(); }).join(); });
  GetPlayer().ResetPlayerNoFillBuffers();
  EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), "2");
}

}  // namespace
