#include <gtest/gtest.h>

#include <atomic>

#include <thread>

#include "tests/audio_player/player_test.h"

namespace {

class Flags : public PlayerTest {};

TEST_F(Flags, UserRequestedSeekIsTrueAtMostOncePerSetting) {
  MakePlayer();
  GetPlayer().SetUserRequestedSeek(true);
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek());
  EXPECT_FALSE(GetPlayer().GetUserRequestedSeek());
  GetPlayer().SetUserRequestedSeek(true);
  EXPECT_TRUE(GetPlayer().GetUserRequestedSeek());
}

TEST_F(Flags, UserRequestedSeekCanBeTakenBack) {
  MakePlayer();
  GetPlayer().SetUserRequestedSeek(true);
  GetPlayer().SetUserRequestedSeek(false);
  EXPECT_FALSE(GetPlayer().GetUserRequestedSeek());
}

TEST_F(Flags, SeekRequestedWhileNotPlayIsTrueAtMostOncePerSetting) {
  LoadReady("1");
  GetPlayer().GetSeekRequestedWhileNotPlay();
  GetPlayer().Seek(960);
  EXPECT_TRUE(GetPlayer().GetSeekRequestedWhileNotPlay());
  EXPECT_FALSE(GetPlayer().GetSeekRequestedWhileNotPlay());
}

TEST_F(Flags, AttaccaHasOccurredIsTrueAtMostOncePerSetting) {
  LoadAndPlay("1");
  GetPlayer().LoadNextSongAttacca();
  EXPECT_TRUE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred());
}

TEST_F(Flags, ReadingStopRequestedDoesNotClearIt) {
  MakePlayer();
  GetPlayer().SetStopRequested(true);
  EXPECT_TRUE(GetPlayer().GetStopRequested());
  EXPECT_TRUE(GetPlayer().GetStopRequested());
  GetPlayer().SetStopRequested(false);
  EXPECT_FALSE(GetPlayer().GetStopRequested());
}

// For a thread checker as much as for the counts: a setting is seen by one reader only.
TEST_F(Flags, AreSafeFromAnyThread) {
  MakePlayer();
  std::atomic<int> seen{0};
  std::vector<std::thread> readers;
  std::atomic<bool> done{false};
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      while (!done) {
        if (GetPlayer().GetUserRequestedSeek()) ++seen;
        GetPlayer().GetAttaccaHasOccurred();
        GetPlayer().GetSeekRequestedWhileNotPlay();
        GetPlayer().GetStopRequested();
      }
    });
  }
  for (int i = 1; i <= 200; ++i) {
    GetPlayer().SetUserRequestedSeek(true);
    GetPlayer().SetStopRequested(i % 2 == 0);
    GetPlayer().SetLoadSongAttaccaIsWaiting();
    while (seen != i) std::this_thread::yield();
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(seen, 200);
}

}  // namespace
