#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <thread>

#include "suite/audio/errors.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/no_threads.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/staircase_content.h"
#include "tests/support/throws_with_text.h"

namespace {

class Preloading : public PlayerTest {
 protected:
  std::set<std::string> Decoded() {
    std::set<std::string> paths;
    for (const fakes::decoder::Call& call : fakes::decoder::GetCalls()) paths.insert(call.path);
    return paths;
  }
  // Loads song 1 while the loader of song 3, no neighbour of it, is still at work: it is let go when this
  // thread waits for it.
  void LoadSong1AndWaitForTheLoaderOf3() {
    fakes::decoder::HoldLoader(Path("3"));
    GetPlayer().LoadSong("2");
    ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("3")));
    const pid_t host = test_support::ThisThread();
    std::thread release([&] {
      EXPECT_TRUE(test_support::WaitUntilItSleeps(host));
      lockWasFree_ = PlayerLockIsFree();
      fakes::decoder::ReleaseLoader(Path("3"));
    });
    GetPlayer().LoadSong("1");
    release.join();
    ASSERT_TRUE(AwaitLoaders());
  }
  std::set<std::string> Paths(const std::vector<std::string>& songs) {
    std::set<std::string> paths;
    for (const std::string& song : songs) paths.insert(Path(song));
    return paths;
  }
  bool lockWasFree_ = false;
};

TEST_F(Preloading, TheFirstSongIsDecodedWithTheNextOnly) {
  LoadReady("1");
  EXPECT_EQ(Decoded(), Paths({"1", "2"}));
}

TEST_F(Preloading, ASongIsBeingDecodedUntilItsLoaderHasHandedItOver) {
  MakePlayer();
  fakes::decoder::HoldLoader(Path("2"));
  GetPlayer().LoadSong("1");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("2")));
  EXPECT_TRUE(GetPlayer().IsBeingDecoded("2"));
  EXPECT_FALSE(GetPlayer().IsBeingDecoded("1"));
  EXPECT_FALSE(GetPlayer().IsBeingDecoded("3"));
  fakes::decoder::ReleaseLoader(Path("2"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_FALSE(GetPlayer().IsBeingDecoded("2"));
}

TEST_F(Preloading, ASongIsDecodedWithBothNeighbours) {
  LoadReady("3");
  EXPECT_EQ(Decoded(), Paths({"2", "3", "4"}));
  EXPECT_EQ(test_support::StaircaseContent::alive, 3);
}

TEST_F(Preloading, TheLastSongIsDecodedWithThePreviousOnly) {
  LoadReady("5");
  EXPECT_EQ(Decoded(), Paths({"4", "5"}));
}

TEST_F(Preloading, ASkippedNeighbourIsNotDecoded) {
  fakes::show_control::Skip("2");
  fakes::show_control::Skip("4");
  LoadReady("3");
  EXPECT_EQ(Decoded(), Paths({"3"}));
}

TEST_F(Preloading, ASkippedNeighbourIsNotKept) {
  test_support::deleter_clock::Hold();
  LoadReady("1");
  EXPECT_EQ(test_support::StaircaseContent::alive, 2);
  fakes::show_control::Skip("2");
  GetPlayer().LoadSong("1");
  test_support::deleter_clock::PassOneSecond();
  EXPECT_EQ(test_support::StaircaseContent::alive, 1);
}

TEST_F(Preloading, NeighboursWithoutAudioArePassedOver) {
  MakePlayer({"2", "4"});
  LoadReady("3");
  EXPECT_EQ(Decoded(), Paths({"1", "3", "5"}));
}

TEST_F(Preloading, NothingIsDecodedTwice) {
  LoadReady("1");
  LoadReady("2");
  LoadReady("3");
  LoadReady("2");
  for (const char* song : {"2", "3"}) EXPECT_EQ(fakes::decoder::CountCalls(Path(song)), 1) << song;
  EXPECT_EQ(fakes::decoder::CountCalls(Path("1")), 2) << "it had left the neighbourhood of 3";
}

TEST_F(Preloading, ASongWithALoaderGetsNoSecondOne) {
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("3"));
  GetPlayer().LoadSong("2");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("3")));
  GetPlayer().LoadSong("3");
  GetPlayer().LoadSong("2");
  fakes::decoder::ReleaseLoader(Path("3"));
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(fakes::decoder::CountCalls(Path("3")), 1);
}

TEST_F(Preloading, ContentThatIsNotWantedAnyMoreIsFreedByTheDeleterAndNotAtOnce) {
  test_support::deleter_clock::Hold();
  LoadReady("1");
  LoadReady("2");
  LoadReady("3");  // 1 is out
  EXPECT_EQ(test_support::StaircaseContent::alive, 4);
  test_support::deleter_clock::PassOneSecond();
  EXPECT_EQ(test_support::StaircaseContent::alive, 3);
}

TEST_F(Preloading, ALoaderThatIsNotWantedAnyMoreIsWaitedForAndItsContentIsFreedAtOnce) {
  test_support::deleter_clock::Hold();
  LoadReady("1");
  LoadSong1AndWaitForTheLoaderOf3();
  EXPECT_EQ(fakes::decoder::CountCalls(Path("3")), 1);
  EXPECT_EQ(test_support::StaircaseContent::alive, 2) << "without a wake-up of the deleter";
}

TEST_F(Preloading, AnErrorOfALoaderThatIsNotWantedAnyMoreIsKeptAllTheSame) {
  LoadReady("1");
  fakes::decoder::FailDecode(Path("3"), fakes::decoder::ErrorKind::Content, "not audio");
  LoadSong1AndWaitForTheLoaderOf3();
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::AudioSampleContentError>(
      [&] { GetPlayer().ThrowIfThreadExceptions(); }, "not audio"));
}

// The loader that is waited for needs the lock to finish.
TEST_F(Preloading, NoLockIsHeldWhileALoaderIsWaitedFor) {
  LoadReady("1");
  LoadSong1AndWaitForTheLoaderOf3();
  EXPECT_TRUE(lockWasFree_);
}

TEST_F(Preloading, ACurrentSongWithoutAFileIsAnError) {
  MakePlayer({"3"});
  GetPlayer().SetActiveSongNumber("3");
  EXPECT_THROW(GetPlayer().SetAttaccaState("3", 1), std::out_of_range);
  EXPECT_TRUE(PlayerLockIsFree());
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Preloading, WithoutAThreadForALoaderTheLoadThrows) {
  MakePlayer();
  {
    const test_support::NoThreads noThreads;
    EXPECT_TRUE(test_support::ThrowsWithText<std::runtime_error>(
        [&] { GetPlayer().LoadSong("1"); },
        "Creating file loader thread: 11 EAGAIN: The system lacked the necessary resources to create another "
        "thread."));
  }
  EXPECT_TRUE(PlayerLockIsFree());
  GetPlayer().LoadSong("1");
  EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 1000u) << "the next attempt succeeds";
  EXPECT_TRUE(AwaitLoaders());
}

}  // namespace
