#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "suite/audio/errors.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/fake_log.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/throws_with_text.h"

namespace {

using fakes::decoder::ErrorKind;

class SongLoading : public PlayerTest {};

// ---- the very first song -----------------------------------------------------------------------------

TEST_F(SongLoading, TheVeryFirstSongIsWaitedForAndGoesOnAsOneThatIsReady) {
  MakePlayer();
  Told();
  GetPlayer().LoadSong("1");
  Journal told = Told();
  EXPECT_EQ(told, (Journal{"player.SetActiveSongNumber 1", "control.LoadSong 1",
                           "gui.ResetAndSeekToTickIndex 0", "notify.SongLoaded 1", "control.FullReset",
                           "output.Refill", "player.EnsureGuiIsCurrent"}));
  EXPECT_EQ(test_support::cranked::CountCreated(), 1);
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP) << "it does not play by itself";
  EXPECT_TRUE(AwaitLoaders());
}

// The converter starts at 44100: the first read must be planned with the decoded rate.
TEST_F(SongLoading, TheVeryFirstSongGivesTheConverterItsRate) {
  fakes::decoder::SetContent(Path("1"), 1000, 48000.0);
  LoadReady("1");
  Output().SetElapsedSampleCount(240);  // 24 samples per tick
  GetPlayer().Play();
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(tick, 10u);
}

TEST_F(SongLoading, TheOutputIsMadeForTheFirstSongsContent) {
  LoadReady("1");
  EXPECT_EQ(Output().GetContent(), GetPlayer().GetCurrentSongContent());
}

TEST_F(SongLoading, TheVeryFirstSongIsWaitedForWithThePlayerLockOpen) {
  MakePlayer();
  fakes::decoder::HoldLoader(Path("1"));
  bool wasFree = false;
  const pid_t host = test_support::ThisThread();
  std::thread release([&] {
    EXPECT_TRUE(test_support::WaitUntilItSleeps(host));
    wasFree = PlayerLockIsFree();
    fakes::decoder::ReleaseLoader(Path("1"));
  });
  GetPlayer().LoadSong("1");
  release.join();
  EXPECT_TRUE(wasFree);
  EXPECT_EQ(test_support::cranked::CountCreated(), 1);
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(SongLoading, AnErrorOfTheVeryFirstSongMakesNoOutputAndIsToldWithoutASongLoaded) {
  fakes::decoder::FailDecode(Path("1"), ErrorKind::OggVorbis, "bad page");
  MakePlayer();
  Told();
  GetPlayer().LoadSong("1");
  EXPECT_EQ(test_support::cranked::CountCreated(), 0);
  EXPECT_EQ(Told("notify"), (Journal{"notify.PlayerException"}));
  EXPECT_EQ(Told("gui"), (Journal{}));
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::OggVorbisDecodeError>(
      [&] { GetPlayer().ThrowIfThreadExceptions(); }, "bad page"));
  EXPECT_TRUE(AwaitLoaders());
}

// Nothing resets the error of a loader: a wait never ends well any more.
TEST_F(SongLoading, AfterAnErrorOfTheVeryFirstSongNoSongThatIsWaitedForGetsAnOutput) {
  fakes::decoder::FailDecode(Path("1"), ErrorKind::OggVorbis, "bad page");
  MakePlayer();
  GetPlayer().LoadSong("1");
  ASSERT_TRUE(AwaitLoaders());
  fakes::decoder::SetContent(Path("4"), 10);
  fakes::decoder::HoldLoader(Path("4"));
  const pid_t host = test_support::ThisThread();
  std::thread release([&] {
    EXPECT_TRUE(test_support::WaitUntilItSleeps(host));
    fakes::decoder::ReleaseLoader(Path("4"));
  });
  GetPlayer().LoadSong("4");
  release.join();
  EXPECT_EQ(test_support::cranked::CountCreated(), 0);
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(SongLoading, AnOutputThatCannotBeMadeIsTheCallersError) {
  MakePlayer();
  test_support::cranked::FailCreate("the device is busy");
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>([&] { GetPlayer().LoadSong("1"); },
                                                                       "the device is busy"));
  EXPECT_TRUE(PlayerLockIsFree());
  EXPECT_EQ(test_support::cranked::Get(), nullptr);
  test_support::cranked::Reset();
  GetPlayer().LoadSong("1");
  EXPECT_NE(test_support::cranked::Get(), nullptr) << "the next attempt succeeds";
  EXPECT_TRUE(AwaitLoaders());
}

// ---- a song that is decoded already --------------------------------------------------------------------

TEST_F(SongLoading, ADecodedSongIsDoneAtOnceAndGetsNoLoader) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("3"));
  GetPlayer().LoadSong("2");
  EXPECT_EQ(fakes::decoder::CountCalls(Path("2")), 1) << "as the neighbour of 1";
  EXPECT_EQ(Told("notify"), (Journal{"notify.SongLoaded 2"}));
  EXPECT_EQ(Output().GetContent(), GetPlayer().GetCurrentSongContent());
  fakes::decoder::ReleaseLoader(Path("3"));
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(SongLoading, TheUpdateGeneratorStandsAtTheStartOfTheSong) {
  SetSong("2", 480, 9600);
  LoadReady("1");
  GetPlayer().LoadSong("2");
  EXPECT_EQ(Told("gui"), (Journal{"gui.ResetAndSeekToTickIndex 480"}));
}

TEST_F(SongLoading, ContentThatTheOutputRefusesIsTheCallersErrorWithTheOutputsText) {
  LoadReady("1");
  Output().RefuseContent("48000 Hz, 2 channels: the output runs at 44100 Hz, 1 channel");
  EXPECT_TRUE(test_support::ThrowsWithText<AudioPlayer::AudioFormatError>(
      [&] { GetPlayer().LoadSong("2"); }, "48000 Hz, 2 channels: the output runs at 44100 Hz, 1 channel"));
  EXPECT_TRUE(PlayerLockIsFree());
  EXPECT_EQ(Told("notify"), (Journal{}));
  EXPECT_TRUE(test_support::ThrowsWithText<AudioPlayer::AudioFormatError>(
      [&] { GetPlayer().LoadSong("2"); }, "48000 Hz, 2 channels: the output runs at 44100 Hz, 1 channel"))
      << "every time: the content stays in the cache";
  EXPECT_TRUE(AwaitLoaders());
}

// Switching waits for nothing, so the lock may be held around it; idling waits, so it may not.
TEST_F(SongLoading, TheOutputIsIdledWithoutTheLockAndSwitchedWithIt) {
  LoadReady("1");
  bool freeWhileIdling = false;
  bool freeWhileSwitching = true;
  Output().OnCall([&](const std::string& call) {
    if (call == "Idle") freeWhileIdling = PlayerLockIsFree();
    if (call == "SwitchContent") freeWhileSwitching = PlayerLockIsFree();
  });
  GetPlayer().LoadSong("2");
  Output().OnCall(nullptr);
  EXPECT_TRUE(freeWhileIdling);
  EXPECT_FALSE(freeWhileSwitching);
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(SongLoading, WhatWasAwaitedBeforeIsNotAwaitedAnyMore) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("3"));
  GetPlayer().LoadSong("3");
  GetPlayer().LoadSong("2");  // 3 is its neighbour, and goes on being decoded
  Told();
  fakes::decoder::ReleaseLoader(Path("3"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(Told(), (Journal{})) << "neither switched to nor played";
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
}

// ---- waiting -------------------------------------------------------------------------------------------

TEST_F(SongLoading, PlayWaitsForASongThatIsStillBeingDecoded) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("4")));
  Told();
  bool wasFree = false;
  const pid_t host = test_support::ThisThread();
  std::thread release([&] {
    EXPECT_TRUE(test_support::WaitUntilItSleeps(host));
    wasFree = PlayerLockIsFree();
    fakes::decoder::ReleaseLoader(Path("4"));
  });
  GetPlayer().Play();
  release.join();
  EXPECT_TRUE(wasFree) << "the loader needs the lock to finish";
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY);
  const Journal told = Told();
  EXPECT_EQ(std::count(told.begin(), told.end(), "output.Start"), 1);
  EXPECT_EQ(std::count(told.begin(), told.end(), "notify.PlaybackStarted"), 2) << "the loader's and this one";
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(SongLoading, ASeekWaitsForASongThatIsStillBeingDecoded) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("4")));
  Told();
  const pid_t host = test_support::ThisThread();
  std::thread release([&] {
    EXPECT_TRUE(test_support::WaitUntilItSleeps(host));
    fakes::decoder::ReleaseLoader(Path("4"));
  });
  GetPlayer().Seek(960);
  release.join();
  const Journal told = Told();
  const auto switched = std::find(told.begin(), told.end(), "output.SwitchContent");
  const auto sought = std::find(told.begin(), told.end(), "control.Seek 960");
  ASSERT_NE(sought, told.end());
  EXPECT_LT(switched - told.begin(), sought - told.begin());
  EXPECT_TRUE(AwaitLoaders());
}

// Only one of them can join the loader's thread; the other waits until the loader is through.
TEST_F(SongLoading, TwoThreadsMayWaitForOneLoader) {
  fakes::show_control::Skip("2");
  LoadAndPlay("1");
  fakes::decoder::HoldLoader(Path("2"));
  std::atomic<pid_t> renderId{0};
  std::thread render([&] {
    renderId = test_support::ThisThread();
    GetPlayer().LoadNextSongAttacca();
  });
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("2")));
  ASSERT_TRUE(test_support::WaitUntilItSleeps(renderId));
  std::atomic<pid_t> hostId{0};
  std::thread host([&] {
    hostId = test_support::ThisThread();
    GetPlayer().Seek(480);
  });
  while (hostId == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(hostId));
  EXPECT_TRUE(PlayerLockIsFree());
  fakes::decoder::ReleaseLoader(Path("2"));
  render.join();
  host.join();
  EXPECT_TRUE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 1000u);
  EXPECT_TRUE(AwaitLoaders());
}

}  // namespace
