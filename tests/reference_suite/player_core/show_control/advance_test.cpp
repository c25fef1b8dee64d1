#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using test_support::kBar;
using test_support::kBeat;
using test_support::Stage;
using test_support::TestSong;

// Everything below asks from a position to a tick in which a read would end.

TEST(Advance, NothingAheadReachesTheTickAskedFor) {
  Stage stage(TestSong("1"));
  EXPECT_EQ(stage.control.Advance(0, 100), "100");
}

TEST(Advance, AnEventBeforeTheTickAskedForIsReached) {
  EXPECT_EQ(Stage(TestSong("1").Caesura(960)).control.Advance(0, 962), "960");
  EXPECT_EQ(Stage(TestSong("1").Cut(960, 5000)).control.Advance(0, 962), "960");
  EXPECT_EQ(Stage(TestSong("1").Vamp(480, 960)).control.Advance(0, 962), "960");
  EXPECT_EQ(Stage(TestSong("1").TempoScale(960, 0.5)).control.Advance(0, 962), "960");
  EXPECT_EQ(Stage(TestSong("1").Transpose(960, 2)).control.Advance(0, 962), "960");
}

TEST(Advance, AnEventInTheLastTickOfAReadIsMetByTheNextReadFromOneTickEarlier) {
  EXPECT_EQ(Stage(TestSong("1").Caesura(960)).control.Advance(0, 960), "959");
  EXPECT_EQ(Stage(TestSong("1").Cut(960, 5000)).control.Advance(0, 960), "959");
  EXPECT_EQ(Stage(TestSong("1").Vamp(480, 960)).control.Advance(0, 960), "959");
  EXPECT_EQ(Stage(TestSong("1").TempoScale(960, 0.5)).control.Advance(0, 960), "959");
}

TEST(Advance, FromOneTickBeforeItTheEventItselfIsReached) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(959);
  EXPECT_EQ(stage.control.Advance(959, 960), "960");
  EXPECT_EQ(stage.control.Advance(959, 961), "960");
}

TEST(Advance, FromTwoTicksBeforeItOneTickIsReached) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(958);
  EXPECT_EQ(stage.control.Advance(958, 960), "959");
}

TEST(Advance, AnEventPastTheTickAskedForIsNotSeen) {
  EXPECT_EQ(Stage(TestSong("1").Caesura(960)).control.Advance(0, 959), "959");
}

TEST(Advance, TheFirstOfSeveralEventsCounts) {
  Stage stage(TestSong("1").Caesura(900).Cut(800, 5000).Vamp(0, 700).TempoScale(600, 0.5));
  EXPECT_EQ(stage.control.Advance(0, 1000), "600");
  stage.control.MoveTo(600);
  EXPECT_EQ(stage.control.Advance(600, 1000), "700");
}

TEST(Advance, APerformersJumpIsAnEvent) {
  Stage stage(TestSong("1").Vamp(0, 4 * kBar, CL::VampExit::NextBeat));
  ASSERT_TRUE(stage.control.ExitLoop());
  EXPECT_EQ(stage.control.Advance(0, 1000), "480");
}

TEST(Advance, AtACutTheJumpIsPendingWithItsTarget) {
  Stage stage(TestSong("1").Cut(0, 5000));
  EXPECT_EQ(stage.control.Advance(0, 100), "jump 5000");
  EXPECT_FALSE(stage.control.IsCaesuraStop());
}

TEST(Advance, AtACaesuraTheStopIsSet) {
  Stage stage(TestSong("1").Caesura(0));
  EXPECT_EQ(stage.control.Advance(0, 100), "caesura 0");
  EXPECT_FALSE(stage.control.IsJumpPending());
}

TEST(Advance, AtTheEndOfALoopTheArmedJumpIsPending) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.MoveTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(stage.control.Advance(960, 1060), "jump 480");
}

TEST(Advance, WithoutHavingBeenProcessedALoopIsNotTaken) {
  Stage stage(TestSong("1").Vamp(480, 960));
  stage.control.MoveTo(960);
  EXPECT_EQ(stage.control.Advance(960, 1060), "1060");
}

TEST(Advance, AtOneTickTheLoopComesBeforeTheCut) {
  Stage stage(TestSong("1").Vamp(480, 960).Cut(960, 5000).Caesura(960));
  stage.control.MoveTo(960);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(stage.control.Advance(960, 1060), "jump 480");
}

TEST(Advance, AtOneTickTheCutComesBeforeTheCaesura) {
  Stage stage(TestSong("1").Cut(960, 5000).Caesura(960));
  stage.control.MoveTo(960);
  EXPECT_EQ(stage.control.Advance(960, 1060), "jump 5000");
  EXPECT_FALSE(stage.control.IsCaesuraStop());
}

TEST(Advance, AtOneTickThePerformersJumpComesBeforeTheCut) {
  Stage stage(TestSong("1").Vamp(0, 4 * kBar, CL::VampExit::NextBeat).Cut(480, 5000));
  ASSERT_TRUE(stage.control.ExitLoop());
  stage.control.MoveTo(480);
  EXPECT_EQ(stage.control.Advance(480, 580), "jump " + std::to_string(4 * kBar));
}

TEST(Advance, AMovedPositionAsksForANewPlan) {
  Stage stage(TestSong("1"));
  stage.control.MoveTo(700);
  EXPECT_EQ(stage.control.Advance(600, 800), "replan 700");
}

TEST(Advance, EachCallClearsTheFlagsOfTheOneBefore) {
  Stage stage(TestSong("1").Caesura(0));
  EXPECT_EQ(stage.control.Advance(0, 100), "caesura 0");
  stage.control.OnCaesuraStop();
  EXPECT_EQ(stage.control.Advance(0, 100), "100");
  EXPECT_EQ(stage.control.Advance(1, 100), "replan 0");
  EXPECT_EQ(stage.control.Advance(0, 100), "100");
}

TEST(Advance, AJumpThatWasFoundButNotTakenIsForgottenByTheNextCall) {
  Stage stage(TestSong("1").Cut(0, 5000));
  EXPECT_EQ(stage.control.Advance(0, 100), "jump 5000");
  EXPECT_EQ(stage.control.Advance(1, 100), "replan 0");
  EXPECT_FALSE(stage.control.IsJumpPending());
}

// The read-by-read picture of the rule: a cue at 960 is reached exactly, whatever the length of the reads.
TEST(Advance, EveryQuantumEndsExactlyOnTheCue) {
  for (unsigned quantum = 2; quantum < 300; ++quantum) {
    Stage stage(TestSong("1").Caesura(960));
    EXPECT_EQ(stage.control.Perform(quantum), "0..960 caesura") << quantum;
    EXPECT_EQ(stage.control.GetTickIndex(), 960U);
  }
}

// A song of repeats within repeats, cuts and caesuras wherever the dice say.
TestSong RandomSong(std::mt19937* dice) {
  const auto roll = [&](unsigned from, unsigned to) {
    return std::uniform_int_distribution<unsigned>(from, to)(*dice);
  };
  TestSong song("1");
  song.Bars(3);
  for (unsigned from = roll(0, 500); from < 5000;) {
    const unsigned to = from + roll(20, 600);
    const unsigned inner = from + roll(0, 9);
    song.Repeat(from, to, static_cast<int>(roll(2, 3)));
    song.Repeat(inner, inner + roll(2, 10), 2);
    if (roll(0, 1) == 0) song.Caesura(roll(from, to));
    if (roll(0, 2) == 0) song.TempoScale(roll(from, to), 0.5);
    from = to + roll(1, 200);
    if (roll(0, 2) == 0) song.Cut(to, from + roll(0, 20));
  }
  return song;
}

TEST(Advance, WhatIsHeardDoesNotDependOnTheLengthOfTheReads) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 dice(seed);
    const TestSong song = RandomSong(&dice);
    std::vector<std::string> heard;
    for (const unsigned quantum : {2U, 7U, 100U, 1999U}) {
      Stage stage(song);
      std::string whole;
      for (std::string part = "caesura"; part.ends_with("caesura");) {
        part = stage.control.Perform(quantum, 100000);
        whole += part + "; ";
        stage.control.OnCaesuraStop();
      }
      heard.push_back(whole);
    }
    EXPECT_TRUE(heard[0].ends_with("end; ")) << heard[0];
    for (const std::string& other : heard) EXPECT_EQ(other, heard[0]) << "seed " << seed;
  }
}

TEST(Advance, TheControlStreamStandsAtThePositionAfterEveryStep) {
  Stage stage(TestSong("1").Vamp(480, 960).Cut(2000, 3000).Caesura(3500).Bars(10));
  for (int i = 0; i < 100; ++i) {
    stage.control.Play(std::min(stage.control.GetTickIndex() + 100, stage.control.GetEndTickIndex()));
    ASSERT_EQ(stage.control.GetHowToPlay().GetTickIndex(), stage.control.GetTickIndex());
    if (i == 50) stage.control.ExitLoop();
    if (stage.control.IsCaesuraStop()) break;
  }
  EXPECT_TRUE(stage.control.IsCaesuraStop());
}

}  // namespace
