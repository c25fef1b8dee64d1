#include <gtest/gtest.h>

#include <optional>

#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/fake_player.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/throws_with_text.h"

namespace {

class Navigation : public PlayerTest {
 protected:
  std::string Current() { return GetPlayer().GetCurrentSongNumber(); }
  // Whether the player lock was free when the song after or before was asked for first.
  std::optional<bool> lockWasFree_;
  void WatchTheSearch() {
    fakes::show_control::OnSongQuery([this] {
      if (!lockWasFree_) lockWasFree_ = PlayerLockIsFree();
    });
  }
};

const Journal kReset = {"control.FullReset", "output.Refill", "player.EnsureGuiIsCurrent"};

Journal operator+(Journal left, const Journal& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// ---- LoadSong --------------------------------------------------------------------------------------

TEST_F(Navigation, LoadingADecodedSongPutsItInPlaceAndResets) {
  LoadReady("1");
  GetPlayer().LoadSong("2");
  Journal told = Told();
  EXPECT_EQ(told, (Journal{"output.Idle", "player.SetActiveSongNumber 2", "control.LoadSong 2",
                           "output.SwitchContent", "gui.ResetAndSeekToTickIndex 0", "notify.SongLoaded 2"} +
                   kReset));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Navigation, LoadingStopsPlaybackFirst) {
  LoadAndPlay("1");
  GetPlayer().LoadSong("2");
  EXPECT_EQ(Told().front(), "output.Stop(true)");
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Navigation, LoadingASongThatIsNotDecodedGoesOnInTheBackground) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  EXPECT_EQ(Told(), (Journal{"output.Idle", "player.SetActiveSongNumber 4", "control.LoadSong 4",
                             "notify.SongLoaded 4"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  fakes::decoder::ReleaseLoader(Path("4"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY) << "it plays as soon as it is decoded";
}

TEST_F(Navigation, LoadingASongWithoutAudioThrowsItsNumberAndChangesNothing) {
  MakePlayer({"3"});
  LoadReady("1");
  EXPECT_TRUE(
      test_support::ThrowsWithText<AudioPlayer::NoAudioForSong>([&] { GetPlayer().LoadSong("3"); }, "3"));
  EXPECT_EQ(Current(), "1");
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(Navigation, ALoadThatFailsIsToldAndThePlayerStaysStopped) {
  fakes::decoder::FailDecode(Path("1"), fakes::decoder::ErrorKind::OggVorbis, "bad page");
  MakePlayer();
  Told();
  GetPlayer().LoadSong("1");
  EXPECT_EQ(Told(),
            (Journal{"player.SetActiveSongNumber 1", "control.LoadSong 1", "notify.PlayerException"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_TRUE(AwaitLoaders());
}

// ---- NextSong --------------------------------------------------------------------------------------

TEST_F(Navigation, NextGoesToTheSongAfterAndReturnsFalse) {
  LoadAndPlay("1");
  EXPECT_FALSE(GetPlayer().NextSong());
  EXPECT_EQ(Current(), "2");
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)", "notify.PlaybackStopped", "output.Idle",
                             "player.SetActiveSongNumber 2", "control.LoadSong 2", "output.SwitchContent",
                             "gui.ResetAndSeekToTickIndex 0", "notify.SongLoaded 2"} +
                     kReset));
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Navigation, NextOnTheLastSongReturnsTrueAndGoesToItsBeginning) {
  LoadAndPlay("5");
  EXPECT_TRUE(GetPlayer().NextSong());
  EXPECT_EQ(Current(), "5");
  EXPECT_EQ(Told(), (Journal{"output.Stop(true)", "notify.PlaybackStopped", "control.Seek 0",
                             "control.ResetGuiUpdate", "output.Refill", "player.EnsureGuiIsCurrent"}));
  EXPECT_EQ(GetPlayer().GetShowControl().GetTickIndex(), 0u);
}

TEST_F(Navigation, NextOnTheLastSongWithAudioReturnsTrue) {
  MakePlayer({"4", "5"});
  LoadReady("3");
  GetPlayer().Seek(960);
  EXPECT_TRUE(GetPlayer().NextSong());
  EXPECT_EQ(Current(), "3");
  EXPECT_EQ(GetPlayer().GetShowControl().GetTickIndex(), 0u);
}

TEST_F(Navigation, NextSkipsSongsWithoutAudio) {
  MakePlayer({"2", "3"});
  LoadReady("1");
  EXPECT_FALSE(GetPlayer().NextSong());
  EXPECT_EQ(Current(), "4");
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Navigation, NextSearchesUnderThePlayerLockAndReleasesItBeforeTheLoad) {
  LoadReady("1");
  WatchTheSearch();
  bool freeWhileLoading = false;
  fakes::show_control::OnLoadSong([&] { freeWhileLoading = PlayerLockIsFree(); });
  GetPlayer().NextSong();
  EXPECT_EQ(lockWasFree_, false);
  EXPECT_TRUE(freeWhileLoading);
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Navigation, NextReleasesThePlayerLockBeforeTheSeek) {
  LoadReady("5");
  bool freeWhileSeeking = false;
  fakes::show_control::OnSeek([&] { freeWhileSeeking = PlayerLockIsFree(); });
  EXPECT_TRUE(GetPlayer().NextSong());
  EXPECT_TRUE(freeWhileSeeking);
}

TEST_F(Navigation, NextTellsOfALoadThatFailed) {
  LoadReadyWithBrokenNeighbour("1", "2", fakes::decoder::ErrorKind::Content, "not audio");
  EXPECT_FALSE(GetPlayer().NextSong());
  const Journal told = Told("notify");
  EXPECT_EQ(told, (Journal{"notify.PlaybackStopped", "notify.SongLoaded 2", "notify.PlayerException"}));
  EXPECT_TRUE(AwaitLoaders());
}

// ---- PreviousSong ----------------------------------------------------------------------------------

TEST_F(Navigation, PreviousMoreThan1920TicksIntoASongRestartsIt) {
  LoadReady("2");
  fakes::player::SetTickIndex(1921);
  GetPlayer().PreviousSong();
  EXPECT_EQ(Current(), "2");
  EXPECT_EQ(Told(), (Journal{"notify.PlaybackStopped", "control.Seek 0", "control.ResetGuiUpdate",
                             "output.Refill", "player.EnsureGuiIsCurrent"}));
}

TEST_F(Navigation, PreviousStopsASongThatPlays) {
  LoadAndPlay("2");
  fakes::player::SetTickIndex(1921);
  GetPlayer().PreviousSong();
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_EQ(Told().front(), "output.Stop(true)");
}

TEST_F(Navigation, PreviousAt1920TicksGoesToTheSongBefore) {
  LoadReady("2");
  fakes::player::SetTickIndex(1920);
  GetPlayer().PreviousSong();
  EXPECT_EQ(Current(), "1");
  EXPECT_EQ(Told(), (Journal{"notify.PlaybackStopped", "output.Idle", "player.SetActiveSongNumber 1",
                             "control.LoadSong 1", "output.SwitchContent", "gui.ResetAndSeekToTickIndex 0",
                             "notify.SongLoaded 1"} +
                     kReset));
}

TEST_F(Navigation, PreviousCountsFromTheStartOfTheSong) {
  SetSong("2", 480, 9600);
  LoadReady("2");
  fakes::player::SetTickIndex(2401);
  GetPlayer().PreviousSong();
  EXPECT_EQ(Current(), "2");
  fakes::player::SetTickIndex(2400);
  GetPlayer().PreviousSong();
  EXPECT_EQ(Current(), "1");
}

TEST_F(Navigation, PreviousOnTheFirstSongRestartsIt) {
  LoadReady("1");
  fakes::player::SetTickIndex(100);
  GetPlayer().PreviousSong();
  EXPECT_EQ(Current(), "1");
  EXPECT_EQ(Told(), (Journal{"notify.PlaybackStopped", "control.Seek 0", "control.ResetGuiUpdate",
                             "output.Refill", "player.EnsureGuiIsCurrent"}));
}

TEST_F(Navigation, PreviousSkipsSongsWithoutAudio) {
  MakePlayer({"2", "3"});
  LoadReady("4");
  GetPlayer().PreviousSong();
  EXPECT_EQ(Current(), "1");
}

TEST_F(Navigation, PreviousBeforeTheFirstSongWithAudioRestarts) {
  MakePlayer({"1", "2"});
  LoadReady("3");
  GetPlayer().PreviousSong();
  EXPECT_EQ(Current(), "3");
}

TEST_F(Navigation, PreviousSearchesWithoutThePlayerLock) {
  LoadReady("2");
  WatchTheSearch();
  GetPlayer().PreviousSong();
  EXPECT_EQ(lockWasFree_, true);
}

TEST_F(Navigation, PreviousTellsOfALoadThatFailed) {
  LoadReadyWithBrokenNeighbour("2", "1", fakes::decoder::ErrorKind::Content, "not audio");
  GetPlayer().PreviousSong();
  EXPECT_EQ(Told("notify"),
            (Journal{"notify.PlaybackStopped", "notify.SongLoaded 1", "notify.PlayerException"}));
  EXPECT_TRUE(AwaitLoaders());
}

}  // namespace
