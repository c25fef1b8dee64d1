#include <gtest/gtest.h>

#include <thread>

#include "exc/assertion/ex_assertion_error.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/staircase_content.h"
#include "tests/support/throws_with_text.h"

namespace {

class ShuttingDown : public PlayerTest {
 protected:
  void ExpectRefused() {
    Told();
    EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
        [&] { GetPlayer().Shutdown(); },
        "Assertion failed: this->GetPlayerState() == PlayerState::STOP, function Shutdown, file "
        "Sources/audio_player, line 1019."));
    EXPECT_EQ(Told(), (Journal{})) << "nothing has changed";
    EXPECT_NE(test_support::cranked::Get(), nullptr);
    EXPECT_TRUE(PlayerLockIsFree());
  }
};

TEST_F(ShuttingDown, DeletesTheOutputOnceTheUpdateGeneratorIsPaused) {
  LoadReady("1");
  GetPlayer().Shutdown();
  EXPECT_EQ(Told(), (Journal{"gui.Pause", "output.Delete"}));
  EXPECT_EQ(test_support::cranked::Get(), nullptr);
}

TEST_F(ShuttingDown, TwiceIsHarmless) {
  LoadReady("1");
  GetPlayer().Shutdown();
  Told();
  GetPlayer().Shutdown();
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(ShuttingDown, BeforeAnythingWasLoadedIsHarmless) {
  MakePlayer();
  Told();
  GetPlayer().Shutdown();
  EXPECT_EQ(Told(), (Journal{}));
}

TEST_F(ShuttingDown, WhilePlayingIsAFaultAndChangesNothing) {
  LoadAndPlay("1");
  ExpectRefused();
}

TEST_F(ShuttingDown, WhilePausedIsAFaultAndChangesNothing) {
  LoadAndPlay("1");
  GetPlayer().Pause();
  ExpectRefused();
}

TEST_F(ShuttingDown, NoLockIsHeldWhileTheGeneratorIsPausedAndTheOutputDeleted) {
  LoadReady("1");
  int seen = 0;
  const auto expectFree = [&](const std::string& call) {
    ++seen;
    EXPECT_TRUE(PlayerLockIsFree()) << call;
  };
  Output().OnCall(expectFree);
  fakes::gui_update::OnCall(expectFree);
  GetPlayer().Shutdown();
  fakes::gui_update::OnCall(nullptr);
  EXPECT_EQ(seen, 2);
}

TEST_F(ShuttingDown, TheNextLoadMakesANewOutput) {
  LoadReady("1");
  GetPlayer().Shutdown();
  Told();
  GetPlayer().LoadSong("2");
  EXPECT_EQ(test_support::cranked::CountCreated(), 2);
  EXPECT_NE(test_support::cranked::Get(), nullptr);
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(ShuttingDown, AfterwardsEveryOperationOfTheTransportIsSafe) {
  LoadReady("1");
  GetPlayer().Shutdown();
  GetPlayer().Play();
  GetPlayer().Pause();
  GetPlayer().Stop();
  GetPlayer().Play();
  GetPlayer().StopAndReset();
  GetPlayer().Seek(960);
  GetPlayer().SeekLeft();
  GetPlayer().SeekRight();
  GetPlayer().ResetPlayer();
  GetPlayer().ResetPlayerNoFillBuffers();
  GetPlayer().Stop();
  GetPlayer().Idle();
  GetPlayer().PrepareForExit();
  EXPECT_EQ(GetPlayer().GetElapsedSampleCount(), 0);
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
  EXPECT_EQ(Told("output"), (Journal{"output.Delete"}));
}

// ---- destruction -----------------------------------------------------------------------------------

TEST_F(ShuttingDown, DestructionDeletesTheOutputBeforeTheMembersGo) {
  LoadReady("1");
  DestroyPlayer();
  EXPECT_EQ(Told(), (Journal{"gui.Pause", "output.Delete", "gui.Pause", "gui.Delete"}));
}

TEST_F(ShuttingDown, DestructionWithoutAnOutputDeletesNone) {
  MakePlayer();
  Told();
  DestroyPlayer();
  EXPECT_EQ(Told(), (Journal{"gui.Pause", "gui.Delete"}));
}

TEST_F(ShuttingDown, DestructionOfAPlayerThatPlaysIsSafe) {
  LoadAndPlay("1");
  DestroyPlayer();
  EXPECT_EQ(test_support::StaircaseContent::alive, 0);
}

TEST_F(ShuttingDown, DestructionFreesDecodedAndQueuedContents) {
  test_support::deleter_clock::Hold();
  LoadReady("1");
  GetPlayer().NextSong();
  GetPlayer().NextSong();
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(test_support::StaircaseContent::alive, 4) << "songs 2, 3 and 4, and 1 in the queue";
  test_support::deleter_clock::LetGo();
  DestroyPlayer();
  EXPECT_EQ(test_support::StaircaseContent::alive, 0);
}

TEST_F(ShuttingDown, DestructionWaitsForLoadersThatStillDecode) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("4")));
  std::thread release([] { fakes::decoder::ReleaseLoader(Path("4")); });
  DestroyPlayer();
  release.join();
  EXPECT_EQ(test_support::StaircaseContent::alive, 0);
}

// It was awaited, and would have started the output.
TEST_F(ShuttingDown, ALoaderThatEndsDuringDestructionStartsNothing) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("4")));
  Told();
  // Let go from the deleter's side of the destruction: by then the wait is cancelled, or the loader not yet
  // begun.
  std::thread destroy([&] { DestroyPlayer(); });
  std::thread release([] { fakes::decoder::ReleaseLoader(Path("4")); });
  destroy.join();
  release.join();
  EXPECT_EQ(test_support::StaircaseContent::alive, 0);
}

}  // namespace
