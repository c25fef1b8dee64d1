#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/staircase_content.h"

namespace {

using test_support::StaircaseContent;

class ContentDeletion : public PlayerTest {
 protected:
  ContentDeletion() { test_support::deleter_clock::Hold(); }
};

TEST_F(ContentDeletion, ContentsQueuedBetweenTwoWakeUpsAreAllFreedAtTheNext) {
  LoadReady("1");
  LoadReady("2");
  LoadReady("3");  // 1 is out
  LoadReady("4");  // and 2
  EXPECT_EQ(StaircaseContent::alive, 5);
  test_support::deleter_clock::PassOneSecond();
  EXPECT_EQ(StaircaseContent::alive, 3);
}

TEST_F(ContentDeletion, WhatIsInTheCacheStays) {
  LoadReady("2");
  for (int second = 0; second < 3; ++second) test_support::deleter_clock::PassOneSecond();
  EXPECT_EQ(StaircaseContent::alive, 3);
  EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 1000u);
}

// A content that notes the order in which contents go, and whether the player lock is free then.
class NotingContent : public StaircaseContent {
 public:
  NotingContent(std::string name, std::vector<std::string>* freed, std::function<bool()> lockIsFree)
      : StaircaseContent(1000), name_(std::move(name)), freed_(freed), lockIsFree_(std::move(lockIsFree)) {}
  ~NotingContent() override { freed_->push_back(name_ + (lockIsFree_() ? "" : " with the lock held")); }

 private:
  std::string name_;
  std::vector<std::string>* freed_;
  std::function<bool()> lockIsFree_;
};

TEST_F(ContentDeletion, IsInQueueOrderAndWithoutThePlayerLock) {
  std::vector<std::string> freed;
  for (const char* song : {"1", "2"}) {
    fakes::decoder::SetContent(Path(song), [&freed, song, this] {
      return new NotingContent(song, &freed, [this] { return PlayerLockIsFree(); });
    });
  }
  LoadReady("1");
  LoadReady("2");
  LoadReady("3");
  LoadReady("4");
  EXPECT_EQ(freed, (std::vector<std::string>{}));
  test_support::deleter_clock::PassOneSecond();
  EXPECT_EQ(freed, (std::vector<std::string>{"1", "2"}));
}

TEST_F(ContentDeletion, OfALoaderThatIsNotWantedAnyMoreIsWithoutThePlayerLockToo) {
  std::vector<std::string> freed;
  fakes::decoder::SetContent(
      Path("3"), [&] { return new NotingContent("3", &freed, [this] { return PlayerLockIsFree(); }); });
  LoadReady("1");
  fakes::decoder::HoldLoader(Path("3"));
  GetPlayer().LoadSong("2");
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld(Path("3")));
  const pid_t host = test_support::ThisThread();
  std::thread release([&] {
    EXPECT_TRUE(test_support::WaitUntilItSleeps(host));
    fakes::decoder::ReleaseLoader(Path("3"));
  });
  GetPlayer().LoadSong("1");  // 3 is no neighbour of it
  release.join();
  EXPECT_EQ(freed, (std::vector<std::string>{"3"}));
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(ContentDeletion, TheDeletersEntryCallsThePlayer) {
  LoadReady("1");
  LoadReady("2");
  LoadReady("3");
  AudioPlayer_AudioContentDeleter(&GetPlayer());
  EXPECT_EQ(StaircaseContent::alive, 3);
}

}  // namespace
