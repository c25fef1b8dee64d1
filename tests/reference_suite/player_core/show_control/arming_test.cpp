#include <gtest/gtest.h>

#include <vector>

#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using test_support::kBar;
using test_support::Stage;
using test_support::TestSong;

unsigned At(unsigned bar) {
  return (bar - 1) * kBar;
}

std::vector<unsigned> EndsAhead(Stage& stage) {
  std::vector<unsigned> ends;
  for (const LoopEvent& loop : stage.control.GetLoopsAhead()) ends.push_back(loop.tick);
  return ends;
}

bool HasCutAt(Stage& stage, unsigned tick) {
  unsigned target = 0;
  return stage.control.HasCutAtTickIndex(tick, &target);
}

using Ticks = std::vector<unsigned>;

// ---- which cues lie ahead of a position ------------------------------------------------------------

TEST(Arming, LoopsLieAheadWhenTheirEndDoes) {
  Stage stage(TestSong("1").Vamp(At(2), At(4)).Vamp(At(5), At(6)));
  stage.control.Seek(At(4) - 1);
  EXPECT_EQ(EndsAhead(stage), (Ticks{At(4), At(6)}));
  stage.control.Seek(At(4));
  EXPECT_EQ(EndsAhead(stage), (Ticks{At(6)}));
}

TEST(Arming, CutsLieAheadFromTheirOwnTickOn) {
  Stage stage(TestSong("1").Cut(At(3), At(5)));
  stage.control.Seek(At(3));
  EXPECT_TRUE(HasCutAt(stage, At(3)));
  stage.control.Seek(At(3) + 1);
  EXPECT_FALSE(HasCutAt(stage, At(3)));
}

TEST(Arming, CaesurasLieAheadFromTheirOwnTickOn) {
  Stage stage(TestSong("1").Caesura(At(3)).Caesura(At(5)));
  stage.control.Seek(At(3));
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(3), At(5)}));
  stage.control.Seek(At(3) + 1);
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(5)}));
}

TEST(Arming, ASeekBackBringsCuesBack) {
  Stage stage(TestSong("1").Caesura(At(3)).Caesura(At(5)).Cut(At(4), At(5)).Vamp(At(2), At(3)));
  stage.control.Seek(At(20));
  EXPECT_EQ(stage.control.GetCaesurasAhead(), Ticks{});
  EXPECT_EQ(EndsAhead(stage), Ticks{});
  stage.control.Seek(At(2));
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(3), At(5)}));
  EXPECT_EQ(EndsAhead(stage), (Ticks{At(3)}));
  EXPECT_TRUE(HasCutAt(stage, At(4)));
}

TEST(Arming, CaesurasComeInTheOrderOfTheSong) {
  Stage stage(TestSong("1").Caesura(At(5)).Caesura(At(3)));
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (std::vector<unsigned>{At(3), At(5)}));
}

TEST(Arming, ACaesuraWrittenTwiceIsOne) {
  Stage stage(TestSong("1").Caesura(At(3)).Caesura(At(3)));
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(3)}));
}

// ---- a seek, a start, a reset ----------------------------------------------------------------------

// Song 1: a vamp in bars 2-4 taken twice and then left, and a safety in bars 6-8 asked for once.
class Counted : public testing::Test {
 protected:
  Counted() : stage(TestSong("1").Bars(20).Vamp(At(2), At(4)).Safety(At(6), At(8))) {
    for (int i = 0; i < 2; ++i) {
      stage.control.PlayTo(At(4));
      stage.control.Play(At(4) + 100);
    }
    stage.control.ExitLoop();
    EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/2/1");
  }
  Stage stage;
};

TEST_F(Counted, ASeekStartsTheCountsOfLoopsAheadAnew) {
  stage.control.Seek(At(1));
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/0/0");
}

TEST_F(Counted, ASeekIntoALoopStartsItsCountAnewToo) {
  stage.control.Seek(At(3));
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/0/0");
}

TEST_F(Counted, ASeekPastALoopDoesNotTouchItUntilItLiesAheadAgain) {
  stage.control.Seek(At(10));
  {
    exc::ScopeLock lock(stage.control);
    stage.control.FindNextControlEventOnSeek(At(1), false);  // as a cut back would
  }
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/2/1");
}

TEST_F(Counted, ASeekOntoTheEndOfALoopDoesNotTouchItEither) {
  stage.control.Seek(At(4));
  {
    exc::ScopeLock lock(stage.control);
    stage.control.FindNextControlEventOnSeek(At(1), false);
  }
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/2/1");
}

TEST_F(Counted, ASeekForgetsWhatWasAskedOfASafety) {
  stage.control.PlayTo(At(7));
  ASSERT_TRUE(stage.control.RepeatSafety());
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "1/0/0");
  stage.control.Seek(At(7));
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "-1/0/0");
}

TEST_F(Counted, AFullResetStartsTheCountsAnew) {
  EXPECT_FALSE(stage.control.FullReset());
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/0/0");
}

TEST_F(Counted, LoadingTheSongAgainStartsTheCountsAnew) {
  stage.player.LoadSong("1");
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/0/0");
}

TEST_F(Counted, TheEngineAsksForAUserSeekToArmLikeOne) {
  stage.control.FindNextControlEventOnSeek(At(3), true);
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/0/0");
}

TEST_F(Counted, ARecoveryKeepsTheLoopAroundItsPlace) {
  EXPECT_EQ(stage.control.RecoverySeek(At(3)), At(3));
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/2/1");
}

TEST_F(Counted, ARecoveryOnTheFirstTickOfALoopKeepsIt) {
  stage.control.RecoverySeek(At(2));
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/2/1");
}

TEST_F(Counted, ARecoveryBeforeALoopStartsItAnew) {
  stage.control.RecoverySeek(At(2) - 1);
  EXPECT_EQ(stage.control.DescribeLoop(At(4)), "0/0/0");
}

// ---- a loop back -----------------------------------------------------------------------------------

TEST(LoopBack, LoopsInsideThePassageAreCountedAnew) {
  Stage stage(TestSong("1").Bars(20).Repeat(At(2), At(9), 2).Vamp(At(3), At(5)));
  stage.control.PlayTo(At(5));
  stage.control.Play(At(5) + 100);
  stage.control.ExitLoop();
  stage.control.PlayTo(At(9));
  EXPECT_EQ(stage.control.Play(At(9) + 100), "jump " + std::to_string(At(2)));
  EXPECT_EQ(stage.control.DescribeLoop(At(5)), "0/0/0");
}

TEST(LoopBack, ASafetyInsideThePassageMustBeAskedForAgain) {
  Stage stage(TestSong("1").Bars(20).Repeat(At(2), At(9), 2).Safety(At(3), At(5)));
  stage.control.PlayTo(At(4));
  stage.control.RepeatSafety();
  stage.control.RepeatSafety();
  stage.control.PlayTo(At(5));
  stage.control.Play(At(5) + 100);
  stage.control.ExitLoop();
  stage.control.PlayTo(At(9));
  stage.control.Play(At(9) + 100);
  EXPECT_EQ(stage.control.DescribeLoop(At(5)), "-1/0/0");
}

TEST(LoopBack, TheLoopTakenAndThoseAroundItKeepTheirs) {
  Stage stage(TestSong("1").Bars(20).Vamp(At(2), At(12)).Repeat(At(3), At(9), 3));
  stage.control.PlayTo(At(9));
  stage.control.Play(At(9) + 100);
  EXPECT_EQ(stage.control.DescribeLoop(At(9)), "2/1/0");
  // The outer one is left, and stays left when the inner one goes back.
  stage.control.PlayTo(At(9) - 100);
  stage.control.ExitLoop();  // the repeat, which is the innermost
  stage.control.ExitLoop();  // the vamp around it
  EXPECT_EQ(stage.control.DescribeLoop(At(12)), "0/0/1");
  stage.control.GetLoop(At(9)).canceled = 0;
  stage.control.PlayTo(At(9));
  stage.control.Play(At(9) + 100);
  EXPECT_EQ(stage.control.GetTickIndex(), At(3));
  EXPECT_EQ(stage.control.DescribeLoop(At(12)), "0/0/1");
  EXPECT_EQ(stage.control.DescribeLoop(At(9)), "2/2/0");
}

TEST(LoopBack, LoopsOutsideThePassageKeepTheirs) {
  Stage stage(TestSong("1").Bars(20).Vamp(At(5), At(6)).Vamp(At(8), At(9)));
  stage.control.GetLoop(At(9)).done = 5;
  stage.control.PlayTo(At(6));
  stage.control.Play(At(6) + 100);
  EXPECT_EQ(stage.control.DescribeLoop(At(9)), "0/5/0");
}

TEST(LoopBack, CuesInsideThePassageLieAheadAgain) {
  Stage stage(TestSong("1").Bars(20).Repeat(At(2), At(9), 2).Caesura(At(4)).Vamp(At(5), At(6)));
  stage.control.PlayTo(At(4));
  stage.control.OnCaesuraStop();
  stage.control.PlayTo(At(5));
  stage.control.ExitLoop();
  stage.control.PlayTo(At(9));
  stage.control.Play(At(9) + 100);
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(4)}));
  EXPECT_EQ(EndsAhead(stage), (Ticks{At(6), At(9)}));
}

TEST(LoopBack, ACaesuraOnTheLandingTickIsNotMetAgain) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(2), At(4), 2).Caesura(At(2)).Caesura(At(3)));
  stage.control.PlayTo(At(2));
  stage.control.OnCaesuraStop();
  stage.control.PlayTo(At(3));
  stage.control.OnCaesuraStop();
  stage.control.PlayTo(At(4));
  stage.control.Play(At(4) + 100);
  EXPECT_EQ(stage.control.GetTickIndex(), At(2));
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(3)}));
  EXPECT_FALSE(stage.control.HasPendingCaesura());
}

TEST(LoopBack, ACutOnTheLandingTickIsTaken) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(4)).Cut(At(2), At(3)));
  EXPECT_EQ(stage.control.Perform(100, 200).find("0..1920 3840..5760 3840..5760 3840..5760 "), 0U);
}

// ---- a cut -----------------------------------------------------------------------------------------

TEST(CutLanding, CountsAndCanceledBitsStayAsTheyAre) {
  Stage stage(TestSong("1").Bars(20).Vamp(At(2), At(6)).Cut(At(4), At(5)).Vamp(At(8), At(9)));
  stage.control.GetLoop(At(9)).done = 3;
  stage.control.PlayTo(At(3));
  stage.control.ExitLoop();
  stage.control.PlayTo(At(4));
  EXPECT_EQ(stage.control.Play(At(4) + 100), "jump " + std::to_string(At(5)));
  EXPECT_EQ(stage.control.DescribeLoop(At(6)), "0/0/1");
  EXPECT_EQ(stage.control.DescribeLoop(At(9)), "0/3/0");
}

TEST(CutLanding, OnTheEndOfALoopHasLeftItBehind) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(5)).Cut(At(3), At(5)));
  EXPECT_EQ(stage.control.Perform(), "0..3840 7680..17280 end");
}

TEST(CutLanding, OnACaesuraStopsThere) {
  Stage stage(TestSong("1").Bars(9).Cut(At(3), At(5)).Caesura(At(5)));
  EXPECT_EQ(stage.control.Perform(), "0..3840 caesura");
  EXPECT_EQ(stage.control.GetTickIndex(), At(5));
}

TEST(CutLanding, CuesThatWereJumpedOverAreNotMet) {
  Stage stage(TestSong("1").Bars(9).Cut(At(3), At(6)).Caesura(At(4)).Cut(At(5), At(9)).Vamp(At(4), At(5)));
  EXPECT_EQ(stage.control.Perform(), "0..3840 9600..17280 end");
}

TEST(CutLanding, ATargetAtTheEndOfTheMidiEndsTheSong) {
  Stage stage(TestSong("1").Bars(9).Cut(At(3), 9 * kBar));
  EXPECT_EQ(stage.control.Perform(), "0..3840 end");
}

TEST(SeekLanding, OnTheEndOfALoopHasLeftItBehind) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(5)));
  stage.control.Seek(At(5));
  EXPECT_EQ(stage.control.Perform(), "7680..17280 end");
}

TEST(SeekLanding, OnACutTakesIt) {
  Stage stage(TestSong("1").Bars(9).Cut(At(3), At(6)));
  stage.control.Seek(At(3));
  EXPECT_EQ(stage.control.Perform(), "9600..17280 end");
}

}  // namespace
