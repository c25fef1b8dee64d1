#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "suite/player_core/errors.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/throws_with_text.h"

namespace {

class Attacca : public PlayerTest {
 protected:
  // Song 2 is reached by attacca and not decoded: it is skipped by preloading.
  void PlayWithSong2Undecoded() {
    fakes::show_control::Skip("2");
    LoadAndPlay("1");
    EXPECT_EQ(fakes::decoder::CountCalls(Path("2")), 0);
  }
};

TEST_F(Attacca, RunsStraightOnIntoADecodedSong) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  GetPlayer().LoadNextSongAttacca();
  EXPECT_EQ(Told(), (Journal{"gui.Pause", "player.SetActiveSongNumber 2", "control.LoadSong 2",
                             "output.SwitchContent", "gui.ResetAndSeekToTickIndex 0", "notify.SongLoaded 2",
                             "control.Seek 0", "player.EnsureGuiIsCurrent", "gui.ResetAndSeekToTickIndex 0",
                             "gui.Unpause"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY);
  EXPECT_TRUE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred()) << "read once";
  EXPECT_FALSE(GetPlayer().GetUserRequestedSeek()) << "it is no user's seek";
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Attacca, HasOccurredWhenThePositionMoves) {
  LoadAndPlay("1");
  bool hadOccurred = false;
  fakes::show_control::OnSeek([&] { hadOccurred = GetPlayer().GetAttaccaHasOccurred(); });
  GetPlayer().LoadNextSongAttacca();
  EXPECT_TRUE(hadOccurred);
  EXPECT_TRUE(AwaitLoaders());
}

// The elapsed count runs on: the new song begins on it where the old one ended.
TEST_F(Attacca, TheNewSongBeginsAtTheSampleCountSoFar) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  GetPlayer().LoadNextSongAttacca();
  Output().SetElapsedSampleCount(1221);
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 10u);
}

TEST_F(Attacca, TheShownTickIsTheStartOfTheNewSong) {
  SetSong("2", 480, 9600);
  LoadAndPlay("1");
  GetPlayer().LoadNextSongAttacca();
  EXPECT_EQ(Told("gui"), (Journal{"gui.Pause", "gui.ResetAndSeekToTickIndex 480",
                                  "gui.ResetAndSeekToTickIndex 480", "gui.Unpause"}));
}

TEST_F(Attacca, WaitsForASongThatIsStillBeingDecodedAndStartsNothing) {
  PlayWithSong2Undecoded();
  fakes::decoder::HoldLoader(Path("2"));
  std::atomic<pid_t> renderId{0};
  std::thread render([&] {
    renderId = test_support::ThisThread();
    GetPlayer().LoadNextSongAttacca();
  });
  EXPECT_TRUE(fakes::decoder::WaitUntilHeld(Path("2")));
  while (renderId == 0) std::this_thread::yield();
  // Only then is the loader surely told that it need not start anything.
  EXPECT_TRUE(test_support::WaitUntilItSleeps(renderId));
  EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred());
  fakes::decoder::ReleaseLoader(Path("2"));
  render.join();
  EXPECT_TRUE(GetPlayer().GetAttaccaHasOccurred());
  const Journal told = Told();
  EXPECT_EQ(std::count(told.begin(), told.end(), "output.SwitchContent"), 1);
  EXPECT_EQ(std::count(told.begin(), told.end(), "output.Start"), 0);
  EXPECT_EQ(std::count(told.begin(), told.end(), "notify.PlaybackStarted"), 0) << "it never stopped";
  EXPECT_EQ(told.back(), "gui.Unpause");
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Attacca, AFailedLoadIsToldAndTheUpdateGeneratorStaysPaused) {
  PlayWithSong2Undecoded();
  fakes::decoder::FailDecode(Path("2"), fakes::decoder::ErrorKind::Audio, "cannot open");
  GetPlayer().LoadNextSongAttacca();
  EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_TRUE(fakes::gui_update::IsPaused());
  EXPECT_EQ(Told(), (Journal{"gui.Pause", "player.SetActiveSongNumber 2", "control.LoadSong 2",
                             "notify.SongLoaded 2", "notify.PlayerException"}));
  EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), "2") << "active, without content";
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Attacca, TheEndOfTheShowReachesTheCaller) {
  LoadAndPlay("5");
  EXPECT_TRUE(test_support::ThrowsWithText<EndOfShow>([&] { GetPlayer().LoadNextSongAttacca(); },
                                                      "No song after 5."));
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(Attacca, SkipsSongsWithoutAudio) {
  MakePlayer({"2"});
  LoadAndPlay("1");
  GetPlayer().LoadNextSongAttacca();
  EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), "3");
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Attacca, ContentThatTheOutputRefusesReachesTheCaller) {
  LoadAndPlay("1");
  Output().RefuseContent("2 channels do not fit 1");
  EXPECT_TRUE(test_support::ThrowsWithText<AudioPlayer::AudioFormatError>(
      [&] { GetPlayer().LoadNextSongAttacca(); }, "2 channels do not fit 1"));
  EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_TRUE(AwaitLoaders());
}

// The output reads nothing more until the attacca is done: it is its own thread that loads.
TEST_F(Attacca, DoesNotIdleTheOutput) {
  LoadAndPlay("1");
  GetPlayer().LoadNextSongAttacca();
  const Journal told = Told();
  EXPECT_EQ(std::count(told.begin(), told.end(), "output.Idle"), 0);
  EXPECT_TRUE(AwaitLoaders());
}

// The flag can be set just after the loader has finished; the next load clears it, so that it does not keep
// the song from playing.
TEST_F(Attacca, AWaitingFlagThatCameTooLateIsClearedByTheNextLoad) {
  LoadReady("1");
  GetPlayer().SetLoadSongAttaccaIsWaiting();
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  fakes::decoder::ReleaseLoader(Path("4"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY);
}

TEST_F(Attacca, SettingTheStateDecodesTheSongThatItLeadsTo) {
  fakes::show_control::Skip("2");
  LoadReady("1");
  fakes::show_control::SkipNothing();
  fakes::show_control::OnSongQuery([] { fakes::Write("neighbours"); });
  GetPlayer().SetAttaccaState("1", 1);
  ASSERT_TRUE(AwaitLoaders());
  Journal told = Told();
  ASSERT_GE(told.size(), 2u);
  told.resize(2);
  EXPECT_EQ(told, (Journal{"player.SetAttaccaState 1 1", "neighbours"}));
  EXPECT_EQ(fakes::decoder::CountCalls(Path("2")), 1);
}

}  // namespace
