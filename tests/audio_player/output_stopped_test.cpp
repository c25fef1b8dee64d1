#include <gtest/gtest.h>

#include <thread>

#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"
#include "tests/audio_player/player_test.h"

namespace {

class OutputStopped : public PlayerTest {};

TEST_F(OutputStopped, AfterARequestedStopSendsNothingAndClearsTheRequest) {
  LoadAndPlay("1");
  GetPlayer().SetStopRequested(true);
  AsOutputSees().NotifyOutputHasStopped();
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_FALSE(GetPlayer().GetStopRequested());
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(OutputStopped, WithoutARequestSendsTheEndOfSongExactlyOnce) {
  LoadAndPlay("1");
  AsOutputSees().NotifyOutputHasStopped();
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_EQ(Told(), (Journal{"notify.EndOfSong"}));
}

TEST_F(OutputStopped, ARequestIsGoodForOneStop) {
  LoadAndPlay("1");
  GetPlayer().SetStopRequested(true);
  AsOutputSees().NotifyOutputHasStopped();
  AsOutputSees().NotifyOutputHasStopped();
  EXPECT_EQ(Told(), (Journal{"notify.EndOfSong"}));
}

TEST_F(OutputStopped, ListenersAreCalledOnThisThreadWithoutThePlayerLock) {
  LoadAndPlay("1");
  std::thread::id thread;
  bool wasFree = false;
  PlayerState state = PlayerState::PLAY;
  notify::callbackDispatcher.Add(&thread, notify::names::stopped_at_end_of_song, [&](void*) {
    thread = std::this_thread::get_id();
    wasFree = PlayerLockIsFree();
    state = GetPlayer().GetPlayerState();
  });
  AsOutputSees().NotifyOutputHasStopped();
  notify::callbackDispatcher.Remove(&thread);
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_TRUE(wasFree);
  EXPECT_EQ(state, PlayerState::STOP) << "stopped before it is announced";
}

}  // namespace
