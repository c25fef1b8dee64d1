#include <gtest/gtest.h>

#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_player.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/cout_capture.h"

namespace {

class Caesuras : public PlayerTest {
 protected:
  PlayerState State() { return GetPlayer().GetPlayerState(); }
};

// ---- OnCaesuraStop ---------------------------------------------------------------------------------

TEST_F(Caesuras, AStopPausesAndTellsTheUserInterface) {
  LoadAndPlay("1");
  GetPlayer().GetSeekRequestedWhileNotPlay();
  EXPECT_FALSE(AsOutputSees().OnCaesuraStop());
  EXPECT_EQ(State(), PlayerState::PAUSE);
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
  EXPECT_EQ(Told(),
            (Journal{"control.ClearFermataCanceledCaesura", "gui.Pause", "control.OnCaesuraStop",
                     "output.Refill", "player.GUINotifyCaesura", "gui.UpdateOnce", "notify.PlaybackPaused"}));
}

TEST_F(Caesuras, AStopForgetsWhatWasRegistered) {
  LoadAndPlay("1");
  AsOutputSees().OnCaesuraStop();
  GetPlayer().Play();
  const test_support::CoutCapture console;
  unsigned tick = 7;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(console.Text(),
            "[Warning] SamplesTicksConverter::tickIndexByElapsedSampleCount_ is empty. Returning 0.\n");
}

TEST_F(Caesuras, ACanceledFermataPausesResetsAndTellsNobody) {
  LoadAndPlay("1");
  fakes::show_control::SetFermataCanceled(true);
  EXPECT_TRUE(AsOutputSees().OnCaesuraStop());
  EXPECT_EQ(State(), PlayerState::PAUSE);
  EXPECT_EQ(Told(), (Journal{"control.ClearFermataCanceledCaesura", "gui.Pause", "control.ResetGuiUpdate",
                             "output.Refill"}));
  EXPECT_FALSE(GetPlayer().GetShowControl().GetFermataCanceledCaesura());
}

TEST_F(Caesuras, AContinueThatIsPendingPassesTheStopThroughOnce) {
  LoadAndPlay("1");
  GetPlayer().Continue();
  EXPECT_TRUE(AsOutputSees().OnCaesuraStop());
  EXPECT_EQ(State(), PlayerState::PAUSE);
  EXPECT_EQ(Told(), (Journal{"control.ClearFermataCanceledCaesura", "gui.Pause", "control.OnCaesuraStop",
                             "output.Refill"}));
  EXPECT_FALSE(AsOutputSees().OnCaesuraStop()) << "the next one is not passed through";
}

TEST_F(Caesuras, BothPendingAndCanceledPassTheStopThrough) {
  LoadAndPlay("1");
  GetPlayer().Continue();
  fakes::show_control::SetFermataCanceled(true);
  EXPECT_TRUE(AsOutputSees().OnCaesuraStop());
  EXPECT_EQ(Told("notify"), (Journal{}));
}

// A base may act on a change of state; here the field is stored past it.
TEST_F(Caesuras, TheStateIsStoredAs4PastTheBase) {
  LoadAndPlay("1");
  fakes::player::TakeStatesSet();
  AsOutputSees().OnCaesuraStop();
  EXPECT_EQ(static_cast<int>(State()), 4);
  EXPECT_EQ(fakes::player::TakeStatesSet(), std::vector<PlayerState>{});
}

TEST_F(Caesuras, TheStateChangesBehindTheRefillAndBeforeAnybodyIsTold) {
  LoadAndPlay("1");
  std::vector<PlayerState> states;
  Output().OnCall([&](const std::string& call) {
    if (call == "Refill") states.push_back(State());
  });
  fakes::gui_update::OnCall([&](const std::string& call) {
    if (call == "UpdateOnce") states.push_back(State());
  });
  AsOutputSees().OnCaesuraStop();
  Output().OnCall(nullptr);
  fakes::gui_update::OnCall(nullptr);
  EXPECT_EQ(states, (std::vector<PlayerState>{PlayerState::PLAY, PlayerState::PAUSE}));
}

TEST_F(Caesuras, AStopHoldsNoLockWhileItRefills) {
  LoadAndPlay("1");
  bool wasFree = false;
  Output().OnCall([&](const std::string& call) {
    if (call == "Refill") wasFree = PlayerLockIsFree();
  });
  AsOutputSees().OnCaesuraStop();
  Output().OnCall(nullptr);
  EXPECT_TRUE(wasFree);
}

TEST_F(Caesuras, AStopWithoutAnOutputDoesTheRestOfItsWork) {
  LoadReady("1");
  GetPlayer().Shutdown();
  Told();
  EXPECT_FALSE(AsOutputSees().OnCaesuraStop());
  EXPECT_EQ(State(), PlayerState::PAUSE);
  EXPECT_EQ(Told("output"), (Journal{}));
}

// ---- a seek that lands on a caesura ------------------------------------------------------------------

// The output stops by itself, later, and then does what a caesura wants.
TEST_F(Caesuras, ASeekOntoOneWhilePlayingTellsTheOutputToStopWithoutWaiting) {
  LoadAndPlay("1");
  GetPlayer().GetSeekRequestedWhileNotPlay();
  fakes::show_control::SetHasPendingCaesura(true);
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960", "output.Stop(false)", "player.EnsureGuiIsCurrent"}));
  EXPECT_EQ(State(), PlayerState::PLAY) << "until the output reports";
  EXPECT_FALSE(GetPlayer().GetSeekRequestedWhileNotPlay());
}

// It is not a requested stop, so it looks like the end of the song: hosts tell the two apart by the caesura.
TEST_F(Caesuras, ASeekOntoOneWhilePlayingIsAnnouncedAsTheEndOfTheSong) {
  LoadAndPlay("1");
  fakes::show_control::SetHasPendingCaesura(true);
  GetPlayer().Seek(960);
  EXPECT_FALSE(GetPlayer().GetStopRequested());
  Output().ReportStop();
  EXPECT_EQ(State(), PlayerState::STOP);
  EXPECT_EQ(Told("notify"), (Journal{"notify.EndOfSong"}));
}

TEST_F(Caesuras, ASeekOntoOneWhileStoppedMakesTheStopAtOnceAndDoesNotStopTheOutput) {
  LoadReady("1");
  fakes::show_control::SetHasPendingCaesura(true);
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960", "control.OnCaesuraStop", "control.ResetGuiUpdate",
                             "output.Refill", "player.EnsureGuiIsCurrent"}));
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
}

TEST_F(Caesuras, ASeekOntoOneWhilePausedMakesTheStopAtOnceAndForgetsAContinue) {
  LoadAndPlay("1");
  GetPlayer().Continue();
  GetPlayer().Pause();
  Told();
  fakes::show_control::SetHasPendingCaesura(true);
  GetPlayer().Seek(960);
  EXPECT_EQ(Told("output"), (Journal{"output.Refill"}));
  EXPECT_FALSE(AsOutputSees().OnCaesuraStop()) << "the continue is forgotten";
}

TEST_F(Caesuras, ASeekOntoOneWhilePlayingKeepsAContinue) {
  LoadAndPlay("1");
  GetPlayer().Continue();
  fakes::show_control::SetHasPendingCaesura(true);
  GetPlayer().Seek(960);
  EXPECT_TRUE(AsOutputSees().OnCaesuraStop());
}

TEST_F(Caesuras, ASeekOntoOneWithoutAnOutputMakesTheStopAtOnce) {
  LoadReady("1");
  GetPlayer().Shutdown();
  GetPlayer().Play();
  GetPlayer().GetSeekRequestedWhileNotPlay();
  Told();
  fakes::show_control::SetHasPendingCaesura(true);
  GetPlayer().Seek(960);
  EXPECT_EQ(Told(), (Journal{"control.Seek 960", "control.OnCaesuraStop", "player.EnsureGuiIsCurrent"}));
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
}

// ---- approaching stops -------------------------------------------------------------------------------

TEST_F(Caesuras, TheAudibleTickStaysAtOrBelowAnApproachingStopUntilItIsCleared) {
  LoadAndPlay("1");
  GetPlayer().GetShowControl().DoSkipAhead(100);
  AsOutputSees().NotifyApproachingStop();
  unsigned tick = 0;
  for (const long long elapsed : {221LL, 2205LL, 2227LL, 44100LL}) {
    Output().SetElapsedSampleCount(elapsed);
    GetPlayer().GetAudibleTickIndex(&tick);
    EXPECT_LE(tick, 100u) << elapsed;
  }
  EXPECT_EQ(tick, 100u);
  Told();
  AsOutputSees().PauseAndClearApproachingStop();
  EXPECT_EQ(Told(), (Journal{"gui.Pause"}));
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 2000u);
}

TEST_F(Caesuras, TheUpdateGeneratorIsPausedWithoutThePlayerLock) {
  LoadAndPlay("1");
  int seen = 0;
  fakes::gui_update::OnCall([&](const std::string& call) {
    if (call != "Pause") return;
    ++seen;
    EXPECT_TRUE(PlayerLockIsFree());
  });
  AsOutputSees().PauseAndClearApproachingStop();
  AsOutputSees().OnCaesuraStop();
  fakes::gui_update::OnCall(nullptr);
  EXPECT_EQ(seen, 2);
}

}  // namespace
