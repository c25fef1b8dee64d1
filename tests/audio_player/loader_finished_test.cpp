#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/fake_log.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/staircase_content.h"
#include "tests/support/wait_until.h"

namespace {

using fakes::decoder::ErrorKind;

class LoaderFinished : public PlayerTest {
 protected:
  // Song 4 is awaited, with an output for song 1 there already; its loader is held.
  void AwaitSong4() {
    LoadReady("1");
    fakes::decoder::HoldLoader(Path("4"));
    GetPlayer().LoadSong("4");
    ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("4")));
    Told();
  }
  void FinishSong4() {
    fakes::decoder::ReleaseLoader(Path("4"));
    ASSERT_TRUE(AwaitLoaders());
  }
};

TEST_F(LoaderFinished, AnAwaitedSongIsPutInPlaceAndPlays) {
  SetSong("4", 480, 9600);
  AwaitSong4();
  FinishSong4();
  EXPECT_EQ(Told(), (Journal{"output.SwitchContent", "gui.ResetAndSeekToTickIndex 480", "output.Start",
                             "notify.PlaybackStarted", "gui.Unpause"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY);
  EXPECT_EQ(Output().GetContent(), GetPlayer().GetCurrentSongContent());
  EXPECT_TRUE(fakes::TakeLogEntries().empty());
}

TEST_F(LoaderFinished, AnAwaitedSongGivesTheConverterTheOutputsRate) {
  AwaitSong4();
  Output().SetSampleRateHz(48000.0);
  FinishSong4();
  GetPlayer().ResetPlayer();
  GetPlayer().Play();
  Output().SetElapsedSampleCount(240);  // 24 samples per tick
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 10u);
}

TEST_F(LoaderFinished, NoLockIsHeldWhenTheAwaitedSongStarts) {
  AwaitSong4();
  bool wasFree = false;
  Output().OnCall([&](const std::string& call) {
    if (call == "Start") wasFree = PlayerLockIsFree();
  });
  FinishSong4();
  Output().OnCall(nullptr);
  EXPECT_TRUE(wasFree);
}

TEST_F(LoaderFinished, AnAwaitedSongThatAnAttaccaWaitsForStartsNothing) {
  AwaitSong4();
  GetPlayer().SetLoadSongAttaccaIsWaiting();
  FinishSong4();
  EXPECT_EQ(Told(), (Journal{"output.SwitchContent"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
}

TEST_F(LoaderFinished, TheWaitOfAnAttaccaIsGoodForOneSong) {
  AwaitSong4();
  GetPlayer().SetLoadSongAttaccaIsWaiting();
  FinishSong4();
  fakes::decoder::HoldLoader(Path("1"));
  GetPlayer().LoadSong("1");
  fakes::decoder::ReleaseLoader(Path("1"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY);
}

TEST_F(LoaderFinished, AnAwaitedSongThatFailsIsToldWhenSomebodyPlays) {
  AwaitSong4();
  fakes::decoder::FailDecode(Path("4"), ErrorKind::OggVorbis, "bad page");
  FinishSong4();
  EXPECT_EQ(Told(), (Journal{}));
  GetPlayer().Play();
  EXPECT_EQ(Told(), (Journal{"notify.PlayerException"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
}

TEST_F(LoaderFinished, AnAwaitedSongThatTheOutputRefusesIsLoggedWithLine104) {
  AwaitSong4();
  Output().RefuseContent("2 channels do not fit 1");
  FinishSong4();
  EXPECT_EQ(fakes::TakeLogEntries(),
            (std::vector<fakes::LogEntry>{{"2 channels do not fit 1", "Sources/file_loader", 104}}));
  EXPECT_EQ(Told(), (Journal{"output.SwitchContent"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_TRUE(PlayerLockIsFree());
  // It stands in nobody's way: nothing is waited for any more.
  Output().AcceptContent();
  GetPlayer().LoadSong("4");
  EXPECT_EQ(Told("notify"), (Journal{"notify.SongLoaded 4"}));
}

TEST_F(LoaderFinished, ANeighbourThatNobodyWaitsForIsKeptAndTellsNobody) {
  MakePlayer();
  fakes::decoder::HoldLoader(Path("2"));
  GetPlayer().LoadSong("1");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("2")));
  Told();
  fakes::decoder::ReleaseLoader(Path("2"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(Told(), (Journal{}));
  EXPECT_EQ(test_support::StaircaseContent::alive, 2);
}

TEST_F(LoaderFinished, ALoadWaitsUntilTheAwaitedSongHasBeenPutInPlace) {
  AwaitSong4();
  std::thread host;
  std::atomic<bool> hasStarted{false};
  std::atomic<pid_t> hostThread{0};
  Output().OnCall([&](const std::string& call) {
    if (call != "Start") return;
    host = std::thread([&] {
      hostThread = test_support::ThisThread();
      GetPlayer().LoadSong("5");
    });
    // Its stop comes behind this start, and then it waits for the flag.
    hasStarted = test_support::WaitUntil([&] { return hostThread != 0; }) &&
                 test_support::WaitUntilItSleeps(hostThread);
  });
  fakes::decoder::ReleaseLoader(Path("4"));
  ASSERT_TRUE(test_support::WaitUntil([&] { return hasStarted.load(); }));
  host.join();
  Output().OnCall(nullptr);
  const Journal after = Told();
  const auto unpaused = std::find(after.begin(), after.end(), "gui.Unpause");
  const auto nextSong = std::find(after.begin(), after.end(), "player.SetActiveSongNumber 5");
  ASSERT_NE(unpaused, after.end());
  EXPECT_LT(unpaused - after.begin(), nextSong - after.begin());
  EXPECT_TRUE(AwaitLoaders());
}

}  // namespace
