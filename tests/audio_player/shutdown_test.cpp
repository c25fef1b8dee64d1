#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

#include "exc/assertion/ex_assertion_error.h"
#include "suite/player_core/errors.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_gui_update.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/staircase_content.h"
#include "tests/support/throws_with_text.h"
#include "tests/support/wait_until.h"

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
  // `id`: that thread's, once it has begun.
  std::thread DestroyWhileSong4IsAwaited(std::atomic<pid_t>* id) {
    fakes::decoder::HoldLoader(Path("4"));
    GetPlayer().LoadSong("4");
    EXPECT_TRUE(fakes::decoder::WaitUntilHeld(Path("4")));
    Told();
    return std::thread([this, id] {
      *id = test_support::ThisThread();
      DestroyPlayer();
    });
  }
  // The system keeps the first 15 letters of a thread's name.
  static bool DeleterLives() {
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
      std::ifstream file(task.path() / "comm");
      std::string name;
      if (std::getline(file, name) && name == "AudioContentDel") return true;
    }
    return false;
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

TEST_F(ShuttingDown, WaitsForALoaderThatIsAboutToStartPlayback) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");
  std::atomic<bool> reached{false};
  std::atomic<bool> mayGoOn{false};
  fakes::gui_update::OnCall([&](const std::string& call) {
    if (call.find("ResetAndSeekToTickIndex") == std::string::npos) return;
    reached = true;
    while (!mayGoOn) std::this_thread::yield();
  });
  fakes::decoder::ReleaseLoader(Path("4"));
  ASSERT_TRUE(test_support::WaitUntil([&] { return reached.load(); }));
  std::atomic<pid_t> id{0};
  std::thread shuttingDown([&] {
    id = test_support::ThisThread();
    GetPlayer().Shutdown();
  });
  while (id == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
  EXPECT_NE(test_support::cranked::Get(), nullptr) << "the loader still has it";
  mayGoOn = true;
  shuttingDown.join();
  fakes::gui_update::OnCall(nullptr);
  EXPECT_EQ(test_support::cranked::Get(), nullptr);
  EXPECT_TRUE(AwaitLoaders());
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
  std::atomic<pid_t> id{0};
  std::thread destroying = DestroyWhileSong4IsAwaited(&id);
  // Once the deleter has gone, only the loader can be what the destruction waits for.
  ASSERT_TRUE(test_support::WaitUntil([&] { return id != 0 && !DeleterLives(); }));
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
  EXPECT_NE(test_support::cranked::Get(), nullptr) << "the loaders end before the output goes";
  fakes::decoder::ReleaseLoader(Path("4"));
  destroying.join();
  EXPECT_EQ(Told(), (Journal{"gui.Pause", "output.Delete", "gui.Pause", "gui.Delete"}));
  EXPECT_EQ(test_support::StaircaseContent::alive, 0);
}

// The output's own thread is still in an attacca when the player has let go of it.
TEST_F(ShuttingDown, AnAttaccaDuringDestructionMakesNoOtherOutput) {
  LoadReady("1");
  AudioPlayer& player = GetPlayer();
  int created = 0;
  test_support::cranked::OnCreate([&] { ++created; });
  bool ends = false;
  Output().OnCall([&](const std::string& call) {
    if (call != "Delete") return;
    try {
      player.LoadNextSongAttacca();
    } catch (const EndOfShow& error) {
      ends = std::string(error.what()) == "The player is being destroyed.";
    }
  });
  DestroyPlayer();
  EXPECT_TRUE(ends);
  EXPECT_EQ(created, 0);
}

// The deleter first: what it is in the middle of freeing nobody else has.
TEST_F(ShuttingDown, DestructionWaitsForTheDeleterBeforeItEndsTheLoaders) {
  test_support::deleter_clock::Hold();
  LoadReady("1");
  std::atomic<pid_t> id{0};
  std::thread destroying = DestroyWhileSong4IsAwaited(&id);
  while (id == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
  // Song 4 is still awaited, and so put in place: nobody has begun to end loaders.
  fakes::decoder::ReleaseLoader(Path("4"));
  EXPECT_TRUE(test_support::WaitUntil([] {
    const Journal told = Told();
    return std::count(told.begin(), told.end(), "output.SwitchContent") != 0;
  }));
  test_support::deleter_clock::LetGo();
  destroying.join();
}

// Tells when it is freed, and with which locks.
class TellingContent : public test_support::StaircaseContent {
 public:
  explicit TellingContent(std::string song) : StaircaseContent(1000), song_(std::move(song)) {}
  ~TellingContent() override { fakes::Write("content.Delete " + song_); }

 private:
  const std::string song_;
};

TEST_F(ShuttingDown, DestructionFreesDecodedContentsThenQueuedOnesUnderThePlayerLockLast) {
  test_support::deleter_clock::Hold();
  for (const char* song : {"1", "2", "3", "4"}) {
    fakes::decoder::SetContent(Path(song), [song] { return new TellingContent(song); });
  }
  LoadReady("1");
  LoadReady("2");
  LoadReady("3");
  std::atomic<pid_t> id{0};
  std::thread destroying([&] {
    const fakes::locks::Journaling journaling;
    id = test_support::ThisThread();
    DestroyPlayer();
  });
  while (id == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id)) << "it waits for the deleter, which frees nothing more";
  test_support::deleter_clock::LetGo();
  destroying.join();
  Journal told = Told();
  std::erase_if(told, [](const std::string& entry) {
    return (entry[0] == '+' || entry[0] == '-') && entry.substr(1) != "Player";
  });
  const auto end = std::find(told.begin(), told.end(), "gui.Delete");
  const Journal freed = {"+Player",          "content.Delete 2", "content.Delete 3",
                         "content.Delete 4", "content.Delete 1", "-Player"};
  ASSERT_GE(end - told.begin(), static_cast<std::ptrdiff_t>(freed.size()));
  EXPECT_EQ(Journal(end - static_cast<std::ptrdiff_t>(freed.size()), end), freed);
  EXPECT_LT(std::find(told.begin(), told.end(), "output.Delete"),
            std::find(told.begin(), told.end(), "content.Delete 2"));
}

}  // namespace
