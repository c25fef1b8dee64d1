#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "suite/core/event_codes.h"
#include "suite/core/gui_dispatcher.h"
#include "tests/reference_suite/player_core/support/lock_record.h"
#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using test_support::kBar;
using test_support::Stage;
using test_support::TestSong;

std::string B(unsigned bar) {
  return std::to_string((bar - 1) * kBar);
}
unsigned At(unsigned bar) {
  return (bar - 1) * kBar;
}
// "FROM..TO " in bars.
std::string Passage(unsigned from, unsigned to) {
  return B(from) + ".." + B(to) + " ";
}

TEST(Loops, ARepeatIsPlayedItsNumberOfPassesInAll) {
  Stage twice(TestSong("1").Bars(6).Repeat(At(3), At(5), 2));
  EXPECT_EQ(twice.control.Perform(), Passage(1, 5) + Passage(3, 7) + "end");
  Stage thrice(TestSong("1").Bars(6).Repeat(At(3), At(5), 3));
  EXPECT_EQ(thrice.control.Perform(), Passage(1, 5) + Passage(3, 5) + Passage(3, 7) + "end");
}

TEST(Loops, AVampGoesOnUntilThePerformerSaysGo) {
  Stage stage(TestSong("1").Bars(6).Vamp(At(3), At(5)));
  const std::string heard = stage.control.Perform(100, 400);
  EXPECT_EQ(heard.substr(heard.size() - 3), "...");
  EXPECT_GE(stage.control.GetLoop(At(5)).done, 3);
  ASSERT_TRUE(stage.control.ExitLoop());
  const std::string rest = stage.control.Perform();
  EXPECT_EQ(rest.substr(rest.find("..")), ".." + B(7) + " end");
}

TEST(Loops, ASafetyIsPlayedOnceWhenNobodyAsks) {
  Stage stage(TestSong("1").Bars(6).Safety(At(3), At(5)));
  EXPECT_EQ(stage.control.Perform(), Passage(1, 7) + "end");
}

TEST(Loops, NestedLoopsAreCountedAnewInEachPassOfTheOuterOne) {
  Stage stage(TestSong("1").Bars(6).Repeat(At(2), At(6), 2).Repeat(At(3), At(4), 2));
  EXPECT_EQ(stage.control.Perform(), Passage(1, 4) + Passage(3, 6) + Passage(2, 4) + Passage(3, 7) + "end");
}

TEST(Loops, AtOneTickTheInnermostIsTakenFirst) {
  Stage stage(TestSong("1").Bars(6).Repeat(At(2), At(5), 2).Repeat(At(4), At(5), 2));
  EXPECT_EQ(stage.control.Perform(), Passage(1, 5) + Passage(4, 5) + Passage(2, 5) + Passage(4, 7) + "end");
}

TEST(Loops, TwoLoopsOverOnePassageBothCount) {
  Stage stage(TestSong("1").Bars(6).Repeat(At(2), At(5), 2).Repeat(At(2), At(5), 3));
  EXPECT_EQ(stage.control.Perform(), Passage(1, 5) + Passage(2, 5) + Passage(2, 5) + Passage(2, 7) + "end");
}

TEST(Loops, ARepeatOfOnePassIsNeverTaken) {
  Stage stage(TestSong("1").Bars(6).Repeat(At(3), At(5), 1));
  EXPECT_EQ(stage.control.Perform(), Passage(1, 7) + "end");
}

TEST(Loops, OnArrivalEveryLoopThatEndsThereLeavesTheList) {
  Stage stage(TestSong("1")
                  .Bars(9)
                  .Vamp(At(2), At(5))
                  .Repeat(At(3), At(5), 2)
                  .Safety(At(4), At(5))
                  .Vamp(At(6), At(8)));
  stage.control.MoveTo(At(5));
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  ASSERT_EQ(stage.control.GetLoopsAhead().size(), 1U);
  EXPECT_EQ(stage.control.GetLoopsAhead()[0].tick, At(8));
}

TEST(Loops, OnArrivalOnlyTheOneThatIsTakenIsCounted) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(5)).Repeat(At(3), At(5), 2));
  stage.control.MoveTo(At(5));
  EXPECT_EQ(stage.control.Play(At(5) + 100), "jump " + B(3));
  const std::vector<LoopEvent> ahead = stage.control.GetLoopsAhead();
  ASSERT_EQ(ahead.size(), 2U);
  for (const LoopEvent& loop : ahead) EXPECT_EQ(loop.done, loop.is_repeat() ? 1 : 0);
}

TEST(Loops, ProcessingTwiceAtOneArrivalCountsOnce) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.MoveTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(stage.control.Play(1060), "jump 480");
  EXPECT_EQ(stage.control.DescribeLoop(960), "0/1/0");
}

TEST(Loops, AJumpIsArmedForTheTickOfArrivalAlone) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.PlayTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.DoSkipAhead(970);  // the output has played more than was planned
  EXPECT_EQ(stage.control.Advance(970, 1070), "1070");
}

TEST(Loops, AJumpThatWasNotTakenIsForgottenWhereverPlaybackArrivesNext) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.PlayTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.MoveTo(1000);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.control.MoveTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(stage.control.Advance(960, 1060), "1060");
}

TEST(Loops, ProcessingElsewhereDoesNothing) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.MoveTo(959);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(stage.control.GetLoopsAhead().size(), 1U);
  EXPECT_EQ(stage.control.DescribeLoop(960), "0/0/0");
}

TEST(Loops, ACanceledLoopIsNotTakenAndTheOneAroundItIs) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(2), At(5), 2).Vamp(At(3), At(5)));
  stage.control.PlayTo(At(4));
  ASSERT_TRUE(stage.control.ExitLoop());
  stage.control.PlayTo(At(5));
  EXPECT_EQ(stage.control.Play(At(5) + 100), "jump " + B(2));
}

TEST(Loops, AUsedUpLoopIsNotTakenAndTheOneAroundItIs) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(5)).Repeat(At(4), At(5), 2));
  const std::string expected = Passage(1, 5) + Passage(4, 5) + Passage(2, 5) + Passage(4, 5) + Passage(2, 5);
  EXPECT_EQ(stage.control.Perform(100, 600).find(expected), 0U);
}

TEST(Loops, LoopsThatEndTogetherStandInTheListWithThoseThatWillBeTakenFirst) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(5)).Repeat(At(4), At(5), 2));
  EXPECT_TRUE(stage.control.GetLoopsAhead()[0].is_repeat());
  stage.control.PlayTo(At(5));
  stage.control.Play(At(5) + 100);  // the repeat, which is used up now
  ASSERT_EQ(stage.control.GetTickIndex(), At(4));
  EXPECT_TRUE(stage.control.GetLoopsAhead()[0].is_vamp());
}

TEST(Loops, TheListIsInTheOrderInWhichTheEndsCome) {
  Stage stage(TestSong("1")
                  .Bars(20)
                  .Vamp(At(10), At(12))
                  .Repeat(At(2), At(9), 2)
                  .Safety(At(3), At(4))
                  .Vamp(At(5), At(8)));
  std::vector<unsigned> ends;
  for (const LoopEvent& loop : stage.control.GetLoopsAhead()) ends.push_back(loop.tick);
  EXPECT_EQ(ends, (std::vector<unsigned>{At(4), At(8), At(9), At(12)}));
}

TEST(Loops, KindsAndLimitsAreThoseOfTheLog) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(1), At(2)).Repeat(At(2), At(3), 4).Safety(At(3), At(4)));
  const std::vector<LoopEvent> loops = stage.control.GetLoopsAhead();
  EXPECT_EQ(loops[0].kind, 64);
  EXPECT_EQ(loops[0].limit, 0);
  EXPECT_EQ(loops[1].kind, 65);
  EXPECT_EQ(loops[1].limit, 3);
  EXPECT_EQ(loops[2].kind, 66);
  EXPECT_EQ(loops[2].limit, -1);
}

TEST(Loops, ALoopThatEndsWithTheSongIsTakenWhenTheEndIsTwoTicksLater) {
  Stage stage(TestSong("1").Bars(6).AudioTo(At(5) + 2).Repeat(At(3), At(5), 2));
  EXPECT_EQ(stage.control.Perform(), Passage(1, 5) + B(3) + ".." + std::to_string(At(5) + 2) + " end");
}

// ---- what listeners hear of passes ---------------------------------------------------------------

class PassListener : public notify::GuiListener {
 public:
  PassListener() { notify::guiDispatcher.AddListener(this); }
  ~PassListener() override { notify::guiDispatcher.RemoveListener(this); }
  void OnLoopPass(const notify::LoopUpdate& update) override {
    passes.push_back(update);
    held = test_support::locks::GetHeld();
    if (onPass) onPass();
  }
  std::vector<notify::LoopUpdate> passes;
  std::vector<std::string> held;
  std::function<void()> onPass;
};

TEST(LoopPasses, EachPassIsToldWhenTheJumpBackIsTaken) {
  PassListener listener;
  Stage stage(TestSong("12").Bars(6).Repeat(At(3), At(5), 3));
  stage.control.PlayTo(At(5));
  EXPECT_TRUE(listener.passes.empty());
  stage.control.Perform();
  ASSERT_EQ(listener.passes.size(), 2U);
  EXPECT_EQ(listener.passes[0].songNumber, "12");
  EXPECT_EQ(listener.passes[0].fromTick, At(3));
  EXPECT_EQ(listener.passes[0].toTick, At(5));
  EXPECT_EQ(listener.passes[0].kind, codes::kRepeat);
  EXPECT_EQ(listener.passes[0].pass, 2);
  EXPECT_EQ(listener.passes[0].passes, 3);
  EXPECT_EQ(listener.passes[1].pass, 3);
}

TEST(LoopPasses, AVampHasNoNumberOfPasses) {
  PassListener listener;
  Stage stage(TestSong("1").Vamp(0, 480));
  stage.control.Perform(100, 15);
  ASSERT_GE(listener.passes.size(), 2U);
  EXPECT_EQ(listener.passes[1].kind, codes::kVamp);
  EXPECT_EQ(listener.passes[1].pass, 3);
  EXPECT_EQ(listener.passes[1].passes, 0);
}

TEST(LoopPasses, APassIsToldOnce) {
  PassListener listener;
  Stage stage(TestSong("1").Vamp(0, 480));
  stage.control.PlayTo(480);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(stage.control.Advance(480, 580), "jump 0");
  EXPECT_EQ(stage.control.Advance(400, 580), "replan 480");
  EXPECT_EQ(listener.passes.size(), 1U);
}

TEST(LoopPasses, ACutIsNoPass) {
  PassListener listener;
  Stage stage(TestSong("1").Bars(9).Cut(At(2), At(4)));
  stage.control.Perform();
  EXPECT_TRUE(listener.passes.empty());
}

TEST(LoopPasses, NoLockIsHeldWhileListenersAreTold) {
  PassListener listener;
  Stage stage(TestSong("1").Vamp(0, 480));
  stage.control.PlayTo(480);
  stage.control.Play(580);
  ASSERT_EQ(listener.passes.size(), 1U);
  EXPECT_EQ(listener.held, std::vector<std::string>{});
}

// A jump that is corrected onto the end of a loop is followed, within the same plan, by that loop's own jump.
TEST(LoopPasses, OneTakenByAPlanWithinAPlanIsToldWhenTheLocksAreFree) {
  PassListener listener;
  Stage stage(TestSong("1").Bars(9).Vamp(0, 480));
  stage.control.PlayTo(480);
  const auto planWithinAPlan = [&] {
    exc::ScopeLock outerPlan(stage.control);
    stage.control.Play(580);
  };
  planWithinAPlan();
  EXPECT_TRUE(listener.passes.empty());
  stage.control.Play(100);
  ASSERT_EQ(listener.passes.size(), 1U);
  EXPECT_EQ(listener.passes[0].pass, 2);
  EXPECT_EQ(listener.held, std::vector<std::string>{});
  stage.control.Play(200);
  EXPECT_EQ(listener.passes.size(), 1U);
}

TEST(LoopPasses, AListenerThatMovesThePositionAsksForANewPlan) {
  PassListener listener;
  Stage stage(TestSong("1").Bars(9).Vamp(0, 480));
  listener.onPass = [&] { stage.control.Seek(At(5)); };
  stage.control.PlayTo(480);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(stage.control.Advance(480, 580), "replan " + B(5));
}

}  // namespace
