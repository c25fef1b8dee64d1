// Many threads at the life of the songs' audio at once. What is asked of the end is little (nothing leaks,
// the current song is there); what counts is that it is reached, and that thread and memory checkers have
// nothing to say.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include "suite/player_core/errors.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/staircase_content.h"
#include "tests/support/wait_until.h"

namespace {

using fakes::decoder::ErrorKind;

class LoadRaces : public PlayerTest {
 protected:
  // Decoding of every song takes its time, another one each time.
  void DecodeUnevenly() {
    for (const char* song : {"1", "2", "3", "4", "5"}) {
      fakes::decoder::SetContent(Path(song), [] {
        thread_local std::minstd_rand random(std::random_device{}());
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 500));
        return new test_support::StaircaseContent(1000);
      });
    }
  }
  // Asks, as the update generator does, until it is told to end.
  std::thread Ask(const std::atomic<bool>& done) {
    return std::thread([this, &done] {
      while (!done) {
        unsigned tick = 0;
        GetPlayer().GetAudibleTickIndex(&tick);
        std::this_thread::sleep_for(std::chrono::microseconds(50));
      }
    });
  }
  // Reads, as the render thread does. Hold the deleter's clock: a read never takes a second.
  std::thread Read(const std::atomic<bool>& done) {
    return std::thread([this, &done] {
      float buffer[64];
      while (!done) {
        long long count = 64;
        AsOutputSees().ReadSamplesAt(100, &count, buffer);
        std::this_thread::sleep_for(std::chrono::microseconds(50));
      }
    });
  }
};

TEST_F(LoadRaces, NextPreviousAndLoadWhileLoadersWork) {
  test_support::deleter_clock::Hold();
  DecodeUnevenly();
  LoadReady("1");
  std::atomic<bool> done{false};
  std::thread asking = Ask(done);
  std::thread reading = Read(done);
  std::minstd_rand random(1);
  for (int turn = 0; turn < 150; ++turn) {
    switch (random() % 6) {
      case 0:
        GetPlayer().NextSong();
        break;
      case 1:
        GetPlayer().PreviousSong();
        break;
      case 2:
        GetPlayer().LoadSong(std::to_string(1 + random() % 5));
        break;
      case 3:
        GetPlayer().Play();
        break;
      case 4:
        GetPlayer().Seek(960);
        break;
      default:
        GetPlayer().SetAttaccaState("1", 1);
        break;
    }
  }
  done = true;
  asking.join();
  reading.join();
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 1000u);
}

// Host and output's thread can wait for the same loader to finish; cancelling its flag wakes only one of
// them.
TEST_F(LoadRaces, EveryoneWhoWaitsForAFinishingLoaderGoesOnWhenItHasFinished) {
  LoadReady("1");
  std::atomic<bool> isStarting{false};
  std::atomic<bool> mayStart{false};
  Output().OnCall([&](const std::string& call) {
    if (call != "Start") return;
    isStarting = true;
    while (!mayStart) std::this_thread::yield();
  });
  fakes::decoder::HoldLoader(Path("4"));
  GetPlayer().LoadSong("4");  // its loader starts the output, and finishes no sooner than that has started
  fakes::decoder::ReleaseLoader(Path("4"));
  ASSERT_TRUE(test_support::WaitUntil([&] { return isStarting.load(); }));
  std::atomic<int> passed{0};
  std::atomic<pid_t> ids[3] = {};
  std::vector<std::thread> waiting;
  for (std::atomic<pid_t>& id : ids) {
    waiting.emplace_back([&] {
      id = test_support::ThisThread();
      GetPlayer().Play();
      ++passed;
    });
  }
  for (const std::atomic<pid_t>& id : ids) {
    ASSERT_TRUE(test_support::WaitUntil([&] { return id != 0; }));
    ASSERT_TRUE(test_support::WaitUntilItSleeps(id));
  }
  EXPECT_EQ(passed, 0);
  mayStart = true;
  const bool allPassed = test_support::WaitUntil([&] { return passed == 3; });
  EXPECT_TRUE(allPassed);
  if (!allPassed) std::abort();  // who still waits waits for ever: there is nothing to join
  for (std::thread& thread : waiting) thread.join();
}

TEST_F(LoadRaces, AttaccasAgainstTheHostsPlaySeekAndAttaccaState) {
  DecodeUnevenly();
  fakes::show_control::Skip("2");
  fakes::show_control::Skip("4");
  LoadAndPlay("1");
  std::atomic<bool> done{false};
  std::thread asking = Ask(done);
  std::thread render([&] {
    try {
      while (true) GetPlayer().LoadNextSongAttacca();
    } catch (const EndOfShow&) {
      done = true;
    }
  });
  std::minstd_rand random(2);
  while (!done) {
    switch (random() % 3) {
      case 0:
        GetPlayer().Play();
        break;
      case 1:
        GetPlayer().Seek(480);
        break;
      default:
        GetPlayer().SetAttaccaState("1", 1);
        break;
    }
  }
  render.join();
  asking.join();
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), "5");
  EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 1000u);
}

// The attacca state is set, and so what is not wanted is thrown away, while another thread makes it wanted.
TEST_F(LoadRaces, AttaccaStateAgainstAttacca) {
  DecodeUnevenly();
  for (int round = 0; round < 10; ++round) {
    fakes::show_control::SkipNothing();
    LoadReady("1");
    fakes::show_control::Skip("2");
    fakes::show_control::Skip("3");
    GetPlayer().LoadSong("1");
    GetPlayer().Play();
    std::atomic<bool> done{false};
    std::thread host([&] {
      while (!done) GetPlayer().SetAttaccaState("1", 1);
    });
    GetPlayer().LoadNextSongAttacca();
    GetPlayer().LoadNextSongAttacca();
    done = true;
    host.join();
    ASSERT_TRUE(AwaitLoaders());
    EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), "3");
    EXPECT_EQ(GetPlayer().GetCurrentSongContent(), Output().GetContent())
        << "what the output has is still there";
    EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 1000u);
  }
}

TEST_F(LoadRaces, LoadersThatFailWhileSongsChange) {
  DecodeUnevenly();
  LoadReady("1");
  fakes::decoder::FailDecode(Path("3"), ErrorKind::OggVorbis, "bad page");
  for (int turn = 0; turn < 60; ++turn) {
    GetPlayer().LoadSong(turn % 2 == 0 ? "2" : "5");
    GetPlayer().Play();
  }
  ASSERT_TRUE(AwaitLoaders());
  EXPECT_THROW(GetPlayer().ThrowIfThreadExceptions(), std::runtime_error);
}

TEST_F(LoadRaces, DestructionWhileDecoding) {
  DecodeUnevenly();
  for (int round = 0; round < 20; ++round) {
    MakePlayer();
    GetPlayer().LoadSong("3");
    GetPlayer().LoadSong("1");
    GetPlayer().LoadSong("5");
    if (round % 2 == 0) GetPlayer().Play();
    DestroyPlayer();
    EXPECT_EQ(test_support::StaircaseContent::alive, 0);
  }
}

TEST_F(LoadRaces, ShutdownWhileALoaderStartsPlayback) {
  DecodeUnevenly();
  for (int round = 0; round < 20; ++round) {
    LoadReady("1");
    GetPlayer().LoadSong("4");  // plays as soon as it is decoded
    try {
      GetPlayer().Shutdown();
    } catch (const std::logic_error&) {
      // It plays already, and then a shutdown is refused.
    }
    ASSERT_TRUE(AwaitLoaders());
    DestroyPlayer();
  }
}

// Each ends with a player that has stopped, and an output that has, although a loader was about to start it.
TEST_F(LoadRaces, WhateverMeetsAStartThatIsUnderWayComesBehindIt) {
  const std::function<void(AudioPlayer&)> ways[] = {
      [](AudioPlayer& player) { player.Stop(); },
      [](AudioPlayer& player) { player.StopAndReset(); },
      [](AudioPlayer& player) { player.ResetPlayer(); },
      [](AudioPlayer& player) {
        player.Pause();
        player.Stop();
      },
  };
  for (const auto& act : ways) {
    LoadReady("1");
    std::atomic<bool> isStarting{false};
    std::atomic<bool> goesOn{false};
    Output().OnCall([&](const std::string& call) {
      if (call != "Start") return;
      isStarting = true;
      while (!goesOn) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    fakes::decoder::HoldLoader(Path("4"));
    GetPlayer().LoadSong("4");  // its loader plays it
    fakes::decoder::ReleaseLoader(Path("4"));
    ASSERT_TRUE(test_support::WaitUntil([&] { return isStarting.load(); }));
    std::atomic<pid_t> host{0};
    std::atomic<bool> isLookedAt{false};
    std::thread acting([&] {
      host = test_support::ThisThread();
      act(GetPlayer());
      while (!isLookedAt) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    ASSERT_TRUE(test_support::WaitUntil([&] { return host != 0; }));
    EXPECT_TRUE(test_support::WaitUntilItSleeps(host)) << "behind the start, or done already";
    goesOn = true;
    isLookedAt = true;
    acting.join();
    Output().OnCall({});
    ASSERT_TRUE(AwaitLoaders());
    EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
    EXPECT_FALSE(Output().GetOutputIsRunning());
    EXPECT_FALSE(GetPlayer().GetStopRequested()) << "or the end of the song would be told to nobody";
    DestroyPlayer();
  }
}

TEST_F(LoadRaces, ManyNextsInARowDropNoSong) {
  DecodeUnevenly();
  for (int round = 0; round < 10; ++round) {
    LoadReady("1");
    for (int song = 2; song <= 5; ++song) {
      EXPECT_FALSE(GetPlayer().NextSong());
      EXPECT_EQ(GetPlayer().GetCurrentSongNumber(), std::to_string(song));
    }
    EXPECT_TRUE(GetPlayer().NextSong());
    ASSERT_TRUE(AwaitLoaders());
  }
}

}  // namespace
