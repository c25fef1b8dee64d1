#include "suite/player_core/gui_update.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "suite/core/log_sink.h"
#include "suite/utility/thread_names.h"
#include "tests/reference_suite/player_core/support/lock_record.h"
#include "tests/reference_suite/player_core/support/position_listener.h"
#include "tests/reference_suite/player_core/support/stage.h"
#include "tests/support/wait_until.h"

namespace {

using gui::GuiUpdate;
using test_support::PositionListener;
using test_support::Stage;
using test_support::TestSong;
using test_support::WaitUntil;

using Ticks = std::vector<unsigned>;

// A generator whose query a test answers.
class Generator : public testing::Test {
 protected:
  Generator() : stage(TestSong("1")), update(stage.player, [this](unsigned* tick) { return query(tick); }) {
    update.SetSong(nullptr);
  }

  // Answers with a tick and whether playback runs, and counts.
  void Answer(unsigned tick, bool isPlaying) {
    answerTick = tick;
    answer = isPlaying;
  }

  Stage stage;
  std::atomic<unsigned> answerTick{0};
  std::atomic<bool> answer{false};
  std::atomic<int> queries{0};
  std::function<bool(unsigned*)> query = [this](unsigned* tick) {
    ++queries;
    *tick = answerTick;
    return answer.load();
  };
  GuiUpdate update;
};

TEST_F(Generator, StartsPaused) {
  update.StartUpdateGenerator();
  update.Pause();
  EXPECT_EQ(queries, 0);
  update.Unpause();
  EXPECT_TRUE(WaitUntil([&] { return queries > 0; }));
}

TEST_F(Generator, StartingItAgainStartsNoSecondThread) {
  std::set<std::thread::id> threads;
  std::mutex mutex;
  query = [&](unsigned*) {
    const std::lock_guard lock(mutex);
    threads.insert(std::this_thread::get_id());
    ++queries;
    return false;
  };
  update.StartUpdateGenerator();
  update.StartUpdateGenerator();
  update.Unpause();
  EXPECT_TRUE(WaitUntil([&] { return queries > 5; }));
  update.Pause();
  EXPECT_EQ(threads.size(), 1U);
}

TEST_F(Generator, AsksNoMoreThan60TimesASecond) {
  const auto begin = std::chrono::steady_clock::now();
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return queries >= 31; }));
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(taken.count(), 30.0 / 60.0 - 0.001);  // 30 whole turns, each a fraction of a nanosecond short
}

TEST_F(Generator, ItsThreadHasAName) {
  std::string name;
  query = [&](unsigned*) {
    if (queries == 0) name = exc::thread_names.GetNameOfCurrentThread();
    ++queries;
    return false;
  };
  update.StartUpdateGenerator();
  update.Unpause();
  EXPECT_TRUE(WaitUntil([&] { return queries > 0; }));
  update.Pause();
  EXPECT_EQ(name, "GuiUpdate");
}

TEST_F(Generator, ANewTickIsShownAndSentOnce) {
  PositionListener listener;
  Answer(960, true);
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return queries > 3; }));
  Answer(970, true);
  const int before = queries;
  ASSERT_TRUE(WaitUntil([&] { return queries > before + 3; }));
  update.Pause();
  EXPECT_EQ(listener.GetTicks(), (Ticks{960, 970}));
  EXPECT_EQ(update.GetTickIndex(), 970U);
}

TEST_F(Generator, WhileNothingPlaysTheShownTickStays) {
  update.ResetAndSeekToTickIndex(500);
  PositionListener listener;
  Answer(960, false);
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return queries > 3; }));
  update.Pause();
  EXPECT_EQ(listener.GetTicks(), Ticks{});
  EXPECT_EQ(update.GetTickIndex(), 500U);
}

// The query stays with it until the listener has heard it to its end.
TEST_F(Generator, TheLastPlaceOfASongIsNotToldAsOneOfTheNext) {
  update.SetSong(&stage.control.GetCurrentSongData());
  Answer(960, true);
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return update.GetTickIndex() == 960; }));
  update.Pause();
  PositionListener listener;
  update.SetSong(&stage.control.GetCurrentSongData());
  update.ResetAndSeekToTickIndex(0);
  const int before = queries;
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return queries > before + 3; }));
  EXPECT_EQ(listener.GetTicks(), Ticks{0});
  for (const unsigned tick : {5U, 960U}) {
    Answer(tick, true);
    EXPECT_TRUE(WaitUntil([&] { return update.GetTickIndex() == tick; }));
  }
  update.Pause();
  EXPECT_EQ(listener.GetTicks(), (Ticks{0, 5, 960}));
}

TEST_F(Generator, NothingIsAskedWhilePaused) {
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return queries > 0; }));
  update.Pause();
  const int before = queries;
  for (int i = 0; i < 100; ++i) std::this_thread::yield();
  EXPECT_EQ(queries, before);
  update.Unpause();
  EXPECT_TRUE(WaitUntil([&] { return queries > before; }));
}

TEST_F(Generator, OneMoreUpdateSendsWhateverTheQueryAnswers) {
  PositionListener listener;
  Answer(960, false);
  update.UpdateOnce();
  EXPECT_EQ(update.GetTickIndex(), 960U);
  Answer(970, true);
  update.UpdateOnce();
  update.UpdateOnce();  // also when nothing has changed
  EXPECT_EQ(listener.GetTicks(), (Ticks{960, 970, 970}));
}

TEST_F(Generator, AResetShowsAndSendsItsTickWithoutAsking) {
  PositionListener listener;
  update.ResetAndSeekToTickIndex(960);
  update.ResetAndSeekToTickIndex(960);
  EXPECT_EQ(listener.GetTicks(), (Ticks{960, 960}));
  EXPECT_EQ(update.GetTickIndex(), 960U);
  EXPECT_EQ(queries, 0);
}

TEST_F(Generator, NoLockIsHeldWhileItAsksOrSends) {
  std::vector<std::string> held;
  std::mutex mutex;
  const auto record = [&] {
    const std::lock_guard lock(mutex);
    for (const std::string& name : test_support::locks::GetHeld()) held.push_back(name);
  };
  PositionListener listener([&](const notify::PositionUpdate&) { record(); });
  query = [&](unsigned* tick) {
    record();
    *tick = static_cast<unsigned>(++queries);
    return true;
  };
  update.UpdateOnce();
  update.ResetAndSeekToTickIndex(5);
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return queries > 3; }));
  update.Pause();
  EXPECT_EQ(held, std::vector<std::string>{});
}

// ---- pausing ---------------------------------------------------------------------------------------

// A query that is held until the test lets it go.
class HeldQuery : public Generator {
 protected:
  HeldQuery() {
    query = [this](unsigned* tick) {
      *tick = answerTick;
      ++queries;
      isInside = true;
      WaitUntil([this] { return mayGo.load(); });
      isInside = false;
      return answer.load();
    };
  }
  std::atomic<bool> isInside{false};
  std::atomic<bool> mayGo{false};

  void ExpectPauseWaits() {
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    std::atomic<bool> hasReturned{false};
    std::thread pausing([&] {
      update.Pause();
      EXPECT_FALSE(isInside);
      hasReturned = true;
    });
    for (int i = 0; i < 100; ++i) {
      EXPECT_FALSE(hasReturned);
      std::this_thread::yield();
    }
    mayGo = true;
    pausing.join();
  }
};

TEST_F(HeldQuery, PauseReturnsWhenTheUpdateInProgressHasEnded) {
  update.StartUpdateGenerator();
  update.Unpause();
  ExpectPauseWaits();
}

TEST_F(HeldQuery, PauseWaitsForAnUpdateOfAnotherThreadToo) {
  std::thread other([&] { update.UpdateOnce(); });
  ExpectPauseWaits();
  other.join();
}

TEST_F(HeldQuery, OtherOperationsDoNotWaitForAnUpdateInProgress) {
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
  update.ResetAndSeekToTickIndex(7);
  update.SetSong(nullptr);
  update.Unpause();
  EXPECT_EQ(update.GetTickIndex(), 7U);
  EXPECT_TRUE(isInside);
  mayGo = true;
}

TEST_F(Generator, PauseFromWithinAnUpdateDoesNotWait) {
  query = [&](unsigned*) {
    ++queries;
    update.Pause();
    return false;
  };
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return queries == 1; }));
  update.Pause();
  EXPECT_EQ(queries, 1);
  update.UpdateOnce();  // the same from the caller's thread
  EXPECT_EQ(queries, 2);
}

TEST_F(Generator, APauseFromAListenerDoesNotWait) {
  PositionListener listener([&](const notify::PositionUpdate&) { update.Pause(); });
  Answer(3, true);
  update.StartUpdateGenerator();
  update.Unpause();
  EXPECT_TRUE(WaitUntil([&] { return listener.GetTicks().size() == 1; }));
}

// ---- what is shown last ----------------------------------------------------------------------------

TEST_F(HeldQuery, AnAnswerOlderThanWhatIsShownIsDropped) {
  PositionListener listener;
  Answer(100, true);
  update.StartUpdateGenerator();
  update.Unpause();
  ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
  update.ResetAndSeekToTickIndex(500);
  std::thread pausing([&] { update.Pause(); });
  // Another turn would ask anew, and its answer is no older.
  EXPECT_TRUE(WaitUntil([&] { return update.IsPaused(); }));
  mayGo = true;
  pausing.join();
  EXPECT_EQ(update.GetTickIndex(), 500U);
  EXPECT_EQ(listener.GetTicks(), (Ticks{500}));
}

TEST_F(Generator, TheTickSentLastIsTheOneShownLast) {
  std::atomic<bool> isBlocked{false};
  std::atomic<bool> mayGo{false};
  // Called in the order in which they are added: the first holds the older position back from the second.
  PositionListener first([&](const notify::PositionUpdate& position) {
    if (position.tickIndex != 100) return;
    isBlocked = true;
    WaitUntil([&] { return mayGo.load(); });
  });
  PositionListener second;
  std::thread older([&] { update.ResetAndSeekToTickIndex(100); });
  ASSERT_TRUE(WaitUntil([&] { return isBlocked.load(); }));
  update.ResetAndSeekToTickIndex(500);
  mayGo = true;
  older.join();
  ASSERT_FALSE(second.GetTicks().empty());
  EXPECT_EQ(second.GetTicks().back(), 500U);
  EXPECT_EQ(update.GetTickIndex(), 500U);
}

// ---- the end, and what goes wrong ------------------------------------------------------------------

TEST_F(Generator, DestructionEndsTheThreadWhereverItStands) {
  for (const bool isPaused : {true, false}) {
    std::atomic<int> asked{0};
    auto doomed = std::make_unique<GuiUpdate>(stage.player, [&](unsigned*) {
      ++asked;
      return false;
    });
    doomed->StartUpdateGenerator();
    if (!isPaused) {
      doomed->Unpause();
      ASSERT_TRUE(WaitUntil([&] { return asked > 0; }));
    }
    doomed.reset();
    const int after = asked;
    for (int i = 0; i < 100; ++i) std::this_thread::yield();
    EXPECT_EQ(asked, after);
  }
}

TEST_F(Generator, WithoutAThreadDestructionIsNothing) {
  GuiUpdate never(stage.player, [](unsigned*) { return false; });
}

TEST_F(Generator, AQueryThatThrowsIsReportedOnceAndAskedAgain) {
  std::vector<std::string> lines;
  std::mutex mutex;
  tesk_log::SetSink([&](const std::string& line) {
    const std::lock_guard lock(mutex);
    lines.push_back(line);
  });
  query = [&](unsigned* tick) -> bool {
    ++queries;
    *tick = 9;
    if (queries <= 3) throw std::runtime_error("no registration");
    if (queries == 4) throw 4;
    return true;
  };
  update.StartUpdateGenerator();
  update.Unpause();
  EXPECT_TRUE(WaitUntil([&] { return update.GetTickIndex() == 9; }));
  update.Pause();
  tesk_log::SetSink({});
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].find("ERROR: no registration (reference_suite/player_core/gui_update/generator.cpp:"),
            0U);
  EXPECT_EQ(lines[1].find("ERROR: The audible tick cannot be told. ("), 0U);
}

TEST_F(Generator, AQueryThatThrowsToTheCallerLeavesNoUpdateInProgress) {
  query = [](unsigned*) -> bool { throw std::runtime_error("no registration"); };
  EXPECT_THROW(update.UpdateOnce(), std::runtime_error);
  update.Pause();  // would wait for ever
}

TEST_F(Generator, EverybodyMayUseItAtOnce) {
  constexpr unsigned kRounds = 100;
  constexpr unsigned kFirstAnswer = 1000;  // above every tick that is sought
  static thread_local unsigned asked = 0;
  query = [this](unsigned* tick) {
    ++asked;
    *tick = kFirstAnswer + static_cast<unsigned>(queries++);
    return true;
  };
  const PositionListener listener;
  update.StartUpdateGenerator();
  update.Unpause();
  std::atomic<unsigned> askedByUpdates{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&, i] {
      for (unsigned k = 0; k < kRounds; ++k) {
        if (i == 0) update.UpdateOnce();
        if (i == 1) update.ResetAndSeekToTickIndex(k);
        if (i == 2) update.SetSong(k % 2 == 0 ? nullptr : &stage.control.GetCurrentSongData());
        update.Pause();
        update.GetTickIndex();
        update.Unpause();
      }
      askedByUpdates += asked;
    });
  }
  for (std::thread& thread : threads) thread.join();
  update.Pause();
  EXPECT_EQ(askedByUpdates, kRounds) << "each update asks once, and nothing else does";

  const Ticks sent = listener.GetTicks();
  ASSERT_FALSE(sent.empty());
  const auto answers = kFirstAnswer + static_cast<unsigned>(queries);
  for (const unsigned tick : sent) {
    EXPECT_TRUE(tick < kRounds || (tick >= kFirstAnswer && tick < answers)) << tick << " is nobody's";
  }
  EXPECT_EQ(sent.back(), update.GetTickIndex()) << "whoever came last, what is shown was sent last";
  for (int i = 0; i < 100; ++i) std::this_thread::yield();
  EXPECT_EQ(kFirstAnswer + static_cast<unsigned>(queries), answers) << "nobody asks while paused";
  EXPECT_EQ(listener.GetTicks().size(), sent.size());
  update.UpdateOnce();
  EXPECT_EQ(update.GetTickIndex(), answers);
}

}  // namespace
