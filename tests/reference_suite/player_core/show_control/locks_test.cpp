#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

#include "tests/reference_suite/player_core/support/lock_record.h"
#include "tests/reference_suite/player_core/support/stage.h"
#include "tests/support/wait_until.h"

namespace {

using test_support::IsFree;
using test_support::kBar;
using test_support::Stage;
using test_support::TestSong;

TestSong Song() {
  return TestSong("1").Bars(9).Caesura(960).Vamp(0, kBar, CL::VampExit::NextBeat);
}

struct Operation {
  const char* name;
  std::function<void(Stage&)> run;
};
void PrintTo(const Operation& operation, std::ostream* out) {
  *out << operation.name;
}

// What moves the position or the cues, and so must not happen in the middle of a render step.
const Operation kMoves[] = {
    {"Seek", [](Stage& stage) { stage.control.Seek(100); }},
    {"FullReset", [](Stage& stage) { stage.control.FullReset(); }},
    {"RecoverySeek", [](Stage& stage) { stage.control.RecoverySeek(100); }},
    {"LoadSong", [](Stage& stage) { stage.control.LoadSong(); }},
    {"OnCaesuraStop", [](Stage& stage) { stage.control.OnCaesuraStop(); }},
    {"SetChangeLog", [](Stage& stage) { stage.control.SetChangeLog(stage.show.log); }},
    {"ExitLoop", [](Stage& stage) { stage.control.ExitLoop(); }},
    {"RepeatSafety", [](Stage& stage) { stage.control.RepeatSafety(); }},
    {"ClearPerformersJump", [](Stage& stage) { stage.control.ClearPerformersJump(); }},
    {"CancelCaesura",
     [](Stage& stage) {
       bool isReached = false;
       stage.control.CancelCaesura(&isReached);
     }},
};

class MovesTheShow : public testing::TestWithParam<Operation> {};

TEST_P(MovesTheShow, WaitsForARenderStepWithoutHoldingTheShowControl) {
  Stage stage(Song());
  std::atomic<bool> hasEnded{false};
  std::thread host;
  {
    exc::ScopeLock renderStep(stage.control.GetReadSamplesLock());
    host = std::thread([&] {
      GetParam().run(stage);
      hasEnded = true;
    });
    for (int i = 0; i < 50; ++i) {
      std::this_thread::yield();
      EXPECT_TRUE(IsFree(*stage.control.GetLock()));
      EXPECT_FALSE(hasEnded);
    }
  }
  host.join();
}

TEST_P(MovesTheShow, TakesTheReadSamplesLockBeforeEveryOther) {
  Stage stage(Song());
  test_support::locks::Forget();
  GetParam().run(stage);
  bool isNestedRight = false;
  for (const auto& [outer, inner] : test_support::locks::GetNestings()) {
    EXPECT_NE(inner, "ReadSamples") << outer;
    if (outer == "ReadSamples" && inner == "ShowControl") isNestedRight = true;
  }
  EXPECT_TRUE(isNestedRight);
}

INSTANTIATE_TEST_SUITE_P(Base, MovesTheShow, testing::ValuesIn(kMoves),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Locks, TheReadSamplesLockIsHeldForTheWholeBody) {
  Stage stage(Song());
  int calls = 0;
  stage.control.onCall = [&](const std::string& call) {
    EXPECT_FALSE(IsFree(stage.control.GetReadSamplesLock())) << call;
    ++calls;
  };
  stage.control.Seek(100);        // SetJump
  stage.control.FullReset();      // ResetControlVariables, SetJump
  stage.control.LoadSong();       // three
  stage.control.OnCaesuraStop();  // ResetGuiUpdate
  EXPECT_EQ(calls, 7);
}

TEST(Locks, BothOfTheShowControlsLocksAreReEntrant) {
  Stage stage(Song());
  exc::ScopeLock samples(stage.control.GetReadSamplesLock());
  exc::ScopeLock lock(stage.control);
  const auto takeBothAgain = [&] {
    exc::ScopeLock inner(stage.control.GetReadSamplesLock());
    exc::ScopeLock innermost(stage.control);
    return stage.control.Seek(100);
  };
  EXPECT_FALSE(takeBothAgain());
}

TEST(Locks, ThePlanningOperationsDoNotTakeTheReadSamplesLock) {
  Stage stage(Song());
  exc::ScopeLock hostsLock(stage.control.GetReadSamplesLock());
  std::thread render([&] {
    stage.control.ProcessLoopEventsAtCurrentTickIndex();
    stage.control.FindNextControlEventOnAdvance(0, 100);
    stage.control.FindNextControlEventOnSeek(100, false);
    stage.control.HasPendingCaesura();
    unsigned target = 0;
    stage.control.HasCutAtTickIndex(0, &target);
    stage.control.DoSkipAhead(50);
  });
  render.join();
}

// One pass over everything that a host does, with the generator and a render thread running: no lock is ever
// taken against the order read-samples, player, update generator, show control, control stream.
TEST(Locks, TheOrderHoldsWhileEverybodyIsAtWork) {
  const std::vector<std::string> order = {"ReadSamples", "Player", "GuiUpdate", "ShowControl", "HowToPlay"};
  Stage stage({Song(), TestSong("2").Bars(9)});
  test_support::locks::Forget();
  stage.player.audible = [&](unsigned* tick) {
    exc::ScopeLock lock(stage.player);
    *tick = stage.control.GetLastSeekTickIndex();
    return true;
  };
  stage.player.GetGuiUpdate().StartUpdateGenerator();
  stage.player.GetGuiUpdate().Unpause();
  std::atomic<bool> isEnding{false};
  std::atomic<int> reads{0};
  std::thread render([&] {
    while (!isEnding) {
      exc::ScopeLock samples(stage.control.GetReadSamplesLock());
      const unsigned to = std::min(stage.control.GetTickIndex() + 100, stage.control.GetEndTickIndex());
      if (to > stage.control.GetTickIndex()) stage.control.Play(to);
      ++reads;
    }
  });
  stage.player.SetPlayerState(PlayerState::PLAY);
  for (int i = 0; i < 30; ++i) {
    const int before = reads;
    ASSERT_TRUE(test_support::WaitUntil([&] { return reads > before + 5; }));
    stage.player.FlowControlExit();
    stage.player.RepeatSafety();
    stage.player.Continue();
    Jump jump;
    stage.player.GetJump(&jump);
    stage.player.GetJumpForVampRepeatOrCut(&jump);
    stage.player.ClearJump();
    stage.player.EnsureGuiIsCurrent();
    stage.player.SeekToNextMeasure();
    stage.player.SeekToPreviousMeasure();
    stage.player.SetAttaccaState("1", 1);
    stage.player.CurrentSongIsAttacca();
    stage.player.GUINotifyCaesura();
    stage.control.Seek(static_cast<unsigned>(i) * 100);
    stage.control.GetSeekLeft();
    stage.control.OnCaesuraStop();
    stage.control.SetChangeLog(stage.show.log);
    stage.control.FullReset();
    stage.control.RecoverySeek(700);
    stage.player.LoadSong(i % 2 == 0 ? "2" : "1");
  }
  isEnding = true;
  render.join();
  stage.player.GetGuiUpdate().Pause();
  const auto rank = [&](const std::string& name) {
    return std::find(order.begin(), order.end(), name) - order.begin();
  };
  for (const auto& [outer, inner] : test_support::locks::GetNestings()) {
    if (rank(outer) == 5 || rank(inner) == 5) continue;
    EXPECT_LT(rank(outer), rank(inner)) << outer << " then " << inner;
  }
}

}  // namespace
