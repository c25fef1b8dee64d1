#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Sources/ob_show_control/errors.h"
#include "exc/lock/scope_lock.h"
#include "tests/audio_player/player_test.h"
#include "tests/support/throws_with_text.h"

namespace {

class Recovery : public PlayerTest {
 protected:
  void SetEveryFlag() {
    GetPlayer().LoadNextSongAttacca();
    GetPlayer().SetUserRequestedSeek(true);
    GetPlayer().SetStopRequested(true);
    Output().SetRunning(false);
    GetPlayer().ResetPlayerNoFillBuffers();  // asks for a seek while not playing
    Told();
  }
  void ExpectNoFlag() {
    EXPECT_FALSE(GetPlayer().GetUserRequestedSeek());
    EXPECT_FALSE(GetPlayer().GetSeekRequestedWhileNotPlay());
    EXPECT_FALSE(GetPlayer().GetAttaccaHasOccurred());
    EXPECT_FALSE(GetPlayer().GetStopRequested());
  }
  unsigned AudibleAt(long long elapsed) {
    Output().SetElapsedSampleCount(elapsed);
    unsigned tick = 99999;
    GetPlayer().GetAudibleTickIndex(&tick);
    return tick;
  }
};

TEST_F(Recovery, ClearsEveryFlagThatIsReadOnceAndTheStopRequest) {
  LoadAndPlay("1");
  SetEveryFlag();
  AsOutputSees().ResetForRecovery(22050, 30000);
  ExpectNoFlag();
  EXPECT_EQ(Told(), (Journal{"player.ResetForRecovery", "control.RecoverySeek 1000"}));
}

TEST_F(Recovery, AdvancingClearsThemTooAndSteps20TicksOn) {
  LoadAndPlay("1");
  SetEveryFlag();
  AsOutputSees().ResetForRecoveryAdvance(22050, 30000);
  ExpectNoFlag();
  EXPECT_EQ(Told(), (Journal{"player.ResetForRecoveryAdvance", "control.RecoverySeek 1020"}));
}

TEST_F(Recovery, PositionAndElapsedCountAgreeAfterwards) {
  LoadAndPlay("1");
  AsOutputSees().ResetForRecovery(22050, 30000);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 22050);
  EXPECT_EQ(AudibleAt(30000), 1000u);
  EXPECT_EQ(AudibleAt(30221), 1010u);
}

TEST_F(Recovery, PositionAndElapsedCountAgreeAfterAdvancing) {
  LoadAndPlay("1");
  AsOutputSees().ResetForRecoveryAdvance(22050, 30000);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 22491);
  EXPECT_EQ(AudibleAt(30000), 1020u);
}

TEST_F(Recovery, EndsTheHoldOfAnAttacca) {
  LoadAndPlay("1");
  AsOutputSees().AddToSampleIndex(1000);
  GetPlayer().LoadNextSongAttacca();
  AsOutputSees().ResetForRecovery(441, 500);
  EXPECT_EQ(AudibleAt(500), 20u) << "below the hold count, and converted all the same";
}

TEST_F(Recovery, LeavesAnApproachingStopAsItIs) {
  LoadAndPlay("1");
  GetPlayer().GetShowControl().DoSkipAhead(20);
  AsOutputSees().NotifyApproachingStop();
  AsOutputSees().ResetForRecovery(22050, 30000);
  EXPECT_EQ(AudibleAt(30000), 20u);
}

TEST_F(Recovery, LeavesTheShownTickAsItIs) {
  LoadAndPlay("1");
  EXPECT_EQ(AudibleAt(221), 10u);
  AsOutputSees().ResetForRecovery(22050, 30000);
  AsOutputSees().NotifyApproachingStop();  // at tick 1000: what is shown stays until that is passed
  EXPECT_EQ(AudibleAt(30000), 10u);
}

TEST_F(Recovery, TheEndOfTheSongReachesTheCallerAndTheFlagsAreCleared) {
  LoadAndPlay("1");
  SetEveryFlag();
  EXPECT_TRUE(test_support::ThrowsWithText<RecoveryReachedEndOfSong>(
      [&] { AsOutputSees().ResetForRecovery(211680, 300000); }, "Recovery reached end of song"));
  ExpectNoFlag();
  SetEveryFlag();
  EXPECT_TRUE(test_support::ThrowsWithText<RecoveryReachedEndOfSong>(
      [&] { AsOutputSees().ResetForRecoveryAdvance(211680, 300000); }, "Recovery reached end of song"));
  ExpectNoFlag();
}

// Otherwise this would wait for ever.
TEST_F(Recovery, DoesNotTakeThePlayerLock) {
  LoadAndPlay("1");
  exc::ScopeLock lock(GetPlayer());
  std::thread([&] {
    AsOutputSees().ResetForRecovery(22050, 30000);
    AsOutputSees().ResetForRecoveryAdvance(22050, 30000);
  }).join();
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 22491);
}

// It moves the position, so no read is planned meanwhile.
TEST_F(Recovery, HoldsTheReadSamplesLock) {
  LoadAndPlay("1");
  std::thread recovery;
  {
    exc::ScopeLock planning(AsOutputSees().GetReadSamplesLock());
    recovery = std::thread([&] { AsOutputSees().ResetForRecovery(22050, 30000); });
    AsOutputSees().AddToSampleIndex(10);
    EXPECT_EQ(AsOutputSees().GetSampleIndex(), 10);
    EXPECT_EQ(Told(), (Journal{}));
  }
  recovery.join();
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 22050);
}

// For a thread checker: the flags are written without the player lock while others ask for them.
TEST_F(Recovery, MayRunWhileOtherThreadsAsk) {
  LoadAndPlay("1");
  std::atomic<bool> done{false};
  std::thread asking([&] {
    while (!done) {
      unsigned tick = 0;
      GetPlayer().GetAudibleTickIndex(&tick);
      GetPlayer().GetStopRequested();
      GetPlayer().GetUserRequestedSeek();
    }
  });
  for (int i = 0; i < 200; ++i) {
    AsOutputSees().ResetForRecovery(22050, 30000);
    AsOutputSees().ResetForRecoveryAdvance(22050, 30000);
  }
  done = true;
  asking.join();
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 22491);
}

}  // namespace
