#include <gtest/gtest.h>

#include "tests/audio_player/player_test.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/cout_capture.h"

namespace {

class AudiblePosition : public PlayerTest {
 protected:
  unsigned AudibleAt(long long elapsed) {
    Output().SetElapsedSampleCount(elapsed);
    unsigned tick = 99999;
    EXPECT_TRUE(GetPlayer().GetAudibleTickIndex(&tick));
    return tick;
  }
  unsigned AudibleWhileNotPlaying() {
    unsigned tick = 99999;
    EXPECT_FALSE(GetPlayer().GetAudibleTickIndex(&tick));
    return tick;
  }
  void MoveControlTo(unsigned tick) { GetPlayer().GetShowControl().DoSkipAhead(tick); }
};

TEST_F(AudiblePosition, FollowsTheElapsedCountWhilePlaying) {
  LoadAndPlay("1");
  EXPECT_EQ(AudibleAt(0), 0u);
  EXPECT_EQ(AudibleAt(221), 10u);
  EXPECT_EQ(AudibleAt(232), 11u);
}

TEST_F(AudiblePosition, WhileStoppedIsTheLaterOfStartAndLastSeek) {
  SetSong("1", 480, 9600);
  LoadReady("1");
  fakes::show_control::SetLastSeekTickIndex(100);
  EXPECT_EQ(AudibleWhileNotPlaying(), 480u);
  fakes::show_control::SetLastSeekTickIndex(960);
  EXPECT_EQ(AudibleWhileNotPlaying(), 960u);
}

TEST_F(AudiblePosition, WhilePausedIsTheLaterOfStartAndLastSeek) {
  SetSong("1", 480, 9600);
  LoadAndPlay("1");
  GetPlayer().Pause();
  fakes::show_control::SetLastSeekTickIndex(0);
  EXPECT_EQ(AudibleWhileNotPlaying(), 480u);
  fakes::show_control::SetLastSeekTickIndex(481);
  EXPECT_EQ(AudibleWhileNotPlaying(), 481u);
}

TEST_F(AudiblePosition, TheOutputIsAskedBeforeThePlayerLockIsTaken) {
  LoadAndPlay("1");
  int asked = 0;
  bool wasFree = false;
  Output().OnCall([&](const std::string& call) {
    if (call != "GetElapsedSampleCount") return;
    ++asked;
    wasFree = PlayerLockIsFree();
  });
  unsigned tick = 0;
  GetPlayer().GetAudibleTickIndex(&tick);
  EXPECT_EQ(asked, 1);
  EXPECT_TRUE(wasFree);
  Output().OnCall(nullptr);
}

// The song before is still on its way to the listener.
TEST_F(AudiblePosition, AfterAnAttaccaStaysUntilTheElapsedCountPassesTheHoldCount) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  EXPECT_EQ(AudibleAt(221), 10u);
  GetPlayer().LoadNextSongAttacca();
  EXPECT_EQ(AudibleAt(500), 10u);
  EXPECT_EQ(AudibleAt(1000), 10u) << "the hold count itself is still the song before";
  EXPECT_EQ(AudibleAt(1001), 0u) << "the first sample of the new song";
  EXPECT_EQ(AudibleAt(1221), 10u);
}

TEST_F(AudiblePosition, OncePassedTheHoldIsOver) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  GetPlayer().LoadNextSongAttacca();
  EXPECT_EQ(AudibleAt(1221), 10u);
  const test_support::CoutCapture console;  // before the first registration: the converter says so
  EXPECT_EQ(AudibleAt(900), 0u) << "converted, not held";
}

// A negative count is smaller than any hold count, which is unsigned.
TEST_F(AudiblePosition, TheHoldComparesSigned) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  EXPECT_EQ(AudibleAt(221), 10u);
  GetPlayer().LoadNextSongAttacca();
  EXPECT_EQ(AudibleAt(-1), 10u);
}

TEST_F(AudiblePosition, NeverPassesAnApproachingStop) {
  LoadAndPlay("1");
  MoveControlTo(20);
  AsOutputSees().NotifyApproachingStop();
  EXPECT_EQ(AudibleAt(2205), 20u);
  EXPECT_EQ(AudibleAt(22050), 20u) << "more than 480 ticks ahead";
}

// Up to the stop the tick that was shown last stays.
TEST_F(AudiblePosition, StaysWhereItIsWhileAnApproachingStopIsNotReached) {
  LoadAndPlay("1");
  EXPECT_EQ(AudibleAt(221), 10u);
  MoveControlTo(2000);
  AsOutputSees().NotifyApproachingStop();
  EXPECT_EQ(AudibleAt(441), 10u);
  EXPECT_EQ(AudibleAt(22050), 10u) << "990 ticks from the shown one, and still before the stop";
  EXPECT_EQ(AudibleAt(44100), 10u) << "exactly on the stop's tick is not past it";
  EXPECT_EQ(AudibleAt(44123), 2000u);
}

TEST_F(AudiblePosition, FollowsAgainWhenTheApproachingStopIsCleared) {
  LoadAndPlay("1");
  MoveControlTo(20);
  AsOutputSees().NotifyApproachingStop();
  EXPECT_EQ(AudibleAt(2205), 20u);
  AsOutputSees().PauseAndClearApproachingStop();
  EXPECT_EQ(AudibleAt(2205), 100u);
}

TEST_F(AudiblePosition, FollowsAgainAfterAReset) {
  LoadAndPlay("1");
  MoveControlTo(20);
  AsOutputSees().NotifyApproachingStop();
  GetPlayer().ResetPlayer();
  GetPlayer().Play();
  EXPECT_EQ(AudibleAt(2205), 100u);
}

TEST_F(AudiblePosition, PlayingWithoutAnOutputStandsAtTheStart) {
  LoadReady("1");
  GetPlayer().Shutdown();
  GetPlayer().Play();
  unsigned tick = 7;
  EXPECT_TRUE(GetPlayer().GetAudibleTickIndex(&tick));
  EXPECT_EQ(tick, 0u);
}

}  // namespace
