#include <gtest/gtest.h>

#include "suite/player_core/content_argument.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

class Construction : public PlayerTest {};

TEST_F(Construction, StartsTheUpdateGeneratorAndNothingElseOfIt) {
  MakePlayer();
  EXPECT_EQ(Told(), (Journal{"gui.StartUpdateGenerator"}));
  EXPECT_TRUE(fakes::gui_update::IsPaused());
}

TEST_F(Construction, EveryFlagIsClearAndThePlayerIsStopped) {
  MakePlayer();
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred());
  EXPECT_FALSE(GetPlayer().GetUserRequestedSeek());
  EXPECT_FALSE(GetPlayer().GetSeekRequestedWhileNotPlay());
  EXPECT_FALSE(GetPlayer().GetStopRequested());
  EXPECT_EQ(test_support::cranked::CountCreated(), 0);
}

TEST_F(Construction, TheFolderIsJoinedWithDataAndTheSongsFile) {
  MakePlayer();
  GetPlayer().LoadSong("1");
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(fakes::decoder::CountCalls("/show/data/1 Song.obd"), 1);
}

TEST_F(Construction, TheBasesContentArgumentGoesToTheDecoder) {
  player_core::SetContentArgument("rate=48000");
  MakePlayer();
  player_core::SetContentArgument("");
  GetPlayer().LoadSong("1");
  ASSERT_TRUE(AwaitLoaders());
  for (const fakes::decoder::Call& call : fakes::decoder::GetCalls()) {
    EXPECT_EQ(call.argument, "rate=48000");
  }
}

TEST_F(Construction, TheDeleterWakesOnceASecond) {
  test_support::deleter_clock::Hold();
  MakePlayer();
  test_support::deleter_clock::PassOneSecond();
  EXPECT_EQ(test_support::deleter_clock::GetLastSleep(), 1u);
}

TEST_F(Construction, TheUpdateGeneratorAsksForTheAudibleTick) {
  MakePlayer();
  unsigned tick = 7;
  EXPECT_FALSE(fakes::gui_update::AskAudibleTick(&tick));
  EXPECT_EQ(tick, 0u);
}

// The base starts playback through what it was given.
TEST_F(Construction, TheBasesContinuePlays) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  GetPlayer().Continue();
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY);
}

TEST_F(Construction, WithoutAThreadForTheDeleterThrowsAndLeavesNothingBehind) {
  const test_support::NoThreads noThreads;
  EXPECT_TRUE(test_support::ThrowsWithText<std::runtime_error>(
      [&] { MakePlayer(); },
      "Creating audio content deleter thread.: 11 EAGAIN: The "
      "system lacked the necessary resources to create "
      "another thread."));
  EXPECT_EQ(Told(), (Journal{"gui.StartUpdateGenerator", "gui.Delete"}));
}

TEST_F(Construction, AccessorsGiveTheMembers) {
  MakePlayer();
  EXPECT_EQ(&GetPlayer().GetShowControl().GetGuiUpdate(), &GetPlayer().GetGuiUpdate());
}

}  // namespace
