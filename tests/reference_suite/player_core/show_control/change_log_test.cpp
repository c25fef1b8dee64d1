#include "suite/midi/change_log.h"

#include <gtest/gtest.h>

#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using test_support::kBar;
using test_support::Stage;
using test_support::TestPlayer;
using test_support::TestShow;
using test_support::TestSong;

using Ticks = std::vector<unsigned>;

unsigned At(unsigned bar) {
  return (bar - 1) * kBar;
}

// Replaces the log of a stage's song by that of another song of the same number. The new log must live as
// long as the stage plays.
class Replacement {
 public:
  explicit Replacement(const TestSong& song) { log_.SetSongLog(song.GetNumber(), song.GetLog()); }
  CL::ChangeLog& Get() { return log_; }

 private:
  CL::ChangeLog log_;
};

TEST(SetChangeLog, TheNewCuesHoldFromTheCurrentPositionOn) {
  Stage stage(TestSong("1").Bars(9).Caesura(At(5)));
  stage.control.PlayTo(At(3));
  Replacement replacement(TestSong("1").Caesura(At(2)).Caesura(At(6)).Cut(At(4), At(5)).Vamp(At(7), At(8)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.GetTickIndex(), At(3));
  EXPECT_EQ(stage.control.Perform(), "3840..5760 7680..9600 caesura");
  EXPECT_EQ(stage.control.GetLoopsAhead().size(), 1U);
}

TEST(SetChangeLog, TheControlStreamHasTheNewValuesAndStandsAtThePosition) {
  Stage stage(TestSong("1").Bars(9));
  stage.control.PlayTo(At(3));
  Replacement replacement(TestSong("1").TempoScale(0, 0.5).TempoScale(At(4), 2.0));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), At(3));
  EXPECT_EQ(stage.control.GetHowToPlay().GetTempoScaleValue(), 0.5);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndexOfNextDspEvent(), At(4));
}

TEST(SetChangeLog, CountsOfLoopsThatAreStillThereStay) {
  Stage stage(TestSong("1").Bars(9).Repeat(At(2), At(6), 3).Vamp(At(3), At(5)).Safety(At(7), At(8)));
  stage.control.GetLoop(At(6)).done = 1;
  stage.control.GetLoop(At(5)).done = 4;
  stage.control.GetLoop(At(5)).canceled = 1;
  stage.control.GetLoop(At(8)).limit = 2;
  Replacement replacement(TestSong("1").Repeat(At(2), At(6), 5).Vamp(At(3), At(5)).Safety(At(7), At(8)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.DescribeLoop(At(6)), "4/1/0");
  EXPECT_EQ(stage.control.DescribeLoop(At(5)), "0/4/1");
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "2/0/0");
}

TEST(SetChangeLog, ALoopOfAnotherPlaceOrKindBeginsAnew) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6)).Vamp(At(7), At(8)));
  stage.control.GetLoop(At(6)).done = 4;
  stage.control.GetLoop(At(8)).done = 4;
  Replacement replacement(TestSong("1").Vamp(At(3), At(6)).Repeat(At(7), At(8), 2));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.DescribeLoop(At(6)), "0/0/0");
  EXPECT_EQ(stage.control.DescribeLoop(At(8)), "1/0/0");
}

TEST(SetChangeLog, CountsOfLoopsBehindStayToo) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(3)));
  stage.control.GetLoop(At(3)).done = 4;
  stage.control.PlayTo(At(2));
  stage.control.ExitLoop();
  stage.control.PlayTo(At(5));
  Replacement replacement(TestSong("1").Vamp(At(2), At(3)));
  stage.control.SetChangeLog(replacement.Get());
  {
    exc::ScopeLock lock(stage.control);
    stage.control.FindNextControlEventOnSeek(0, false);
  }
  EXPECT_EQ(stage.control.DescribeLoop(At(3)), "0/4/1");
}

TEST(SetChangeLog, ALoopWhoseEndIsReachedIsStillTaken) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(3)));
  stage.control.PlayTo(At(3));
  Replacement replacement(TestSong("1").Vamp(At(2), At(3)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.Play(At(3) + 100), "jump 1920");
}

TEST(SetChangeLog, AnArmedJumpIsStillTakenWhenItsLoopIsStillThere) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(3)));
  stage.control.PlayTo(At(3));
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  Replacement same(TestSong("1").Vamp(At(2), At(3)));
  stage.control.SetChangeLog(same.Get());
  EXPECT_EQ(stage.control.Advance(At(3), At(3) + 100), "jump 1920");
  Replacement none(TestSong("1"));
  stage.control.SetChangeLog(none.Get());
  EXPECT_EQ(stage.control.Advance(At(3), At(3) + 100), "3940");
}

TEST(SetChangeLog, ACaesuraAtWhichPlaybackStandsIsNotMetAgain) {
  Stage stage(TestSong("1").Bars(3).Caesura(At(2)));
  EXPECT_EQ(stage.control.Perform(), "0..1920 caesura");
  stage.control.OnCaesuraStop();
  Replacement replacement(TestSong("1").Caesura(At(2)).Caesura(At(3)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(3)}));
}

TEST(SetChangeLog, ACaesuraThatWasSoughtAndAtWhichPlaybackStandsIsNotMetAgain) {
  Stage stage(TestSong("1").Bars(3).Caesura(At(2)));
  stage.control.Seek(At(2));
  stage.control.OnCaesuraStop();
  Replacement replacement(TestSong("1").Caesura(At(2)).Caesura(At(3)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{At(3)}));
}

TEST(SetChangeLog, CuesThatArePendingAtThePositionStayPending) {
  Stage stage(TestSong("1").Bars(3).Caesura(At(2)));
  stage.control.PlayTo(At(2));
  Replacement replacement(TestSong("1").Caesura(At(2)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_TRUE(stage.control.HasPendingCaesura());
  Stage cut(TestSong("1").Bars(9).Cut(At(2), At(5)));
  cut.control.PlayTo(At(2));
  Replacement other(TestSong("1").Cut(At(2), At(6)));
  cut.control.SetChangeLog(other.Get());
  EXPECT_EQ(cut.control.Advance(At(2), At(2) + 100), "jump 9600");
}

// Some samples of the tick may have been played.
TEST(SetChangeLog, ANewCueOnTheTickThatIsPlayedComesTooLate) {
  Stage stage(TestSong("1").Bars(9));
  stage.control.PlayTo(At(2));
  Replacement replacement(TestSong("1").Caesura(At(2)).Cut(At(2), At(5)).Vamp(0, At(2)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.Play(At(2) + 100), "2020");
}

TEST(SetChangeLog, ANewCutOnTheTickThatIsPlayedComesTooLateHoweverOftenTheLogChanges) {
  Stage stage(TestSong("1").Bars(9));
  stage.control.PlayTo(At(3));
  Replacement first(TestSong("1"));
  stage.control.SetChangeLog(first.Get());
  Replacement second(TestSong("1").Cut(At(3), At(5)).Cut(At(6), At(8)));
  stage.control.SetChangeLog(second.Get());
  EXPECT_EQ(stage.control.Perform(), "3840..9600 13440..17280 end");
}

TEST(SetChangeLog, AfterAJumpAndASkipANewCutOnTheTickComesTooLate) {
  Stage stage(TestSong("1").Bars(9));
  stage.control.Seek(At(3));
  stage.control.DoSkipAhead(At(3));
  Replacement replacement(TestSong("1").Cut(At(3), At(5)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_EQ(stage.control.Perform(), "3840..17280 end");
}

TEST(SetChangeLog, ALoopThatEndedOneTickEarlierIsNotAhead) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(3)));
  stage.control.PlayTo(At(3));
  Replacement replacement(TestSong("1").Vamp(At(2), At(3)).Vamp(At(1), At(3) - 1));
  stage.control.SetChangeLog(replacement.Get());
  ASSERT_EQ(stage.control.GetLoopsAhead().size(), 1U);
  EXPECT_EQ(stage.control.GetLoopsAhead().front().tick, At(3));
}

TEST(SetChangeLog, APerformersJumpGoesWhenAnotherLoopTakesThePlaceOfItsVamp) {
  Stage stage(TestSong("1").Bars(9).Vamp(At(2), At(6), CL::VampExit::NextBar));
  stage.control.PlayTo(At(3) + 100);
  stage.control.ExitLoop();
  Replacement replacement(TestSong("1").Vamp(At(1), At(6), CL::VampExit::NextBar));
  stage.control.SetChangeLog(replacement.Get());
  Jump jump;
  EXPECT_FALSE(stage.control.GetPerformersJump(&jump));
}

TEST(SetChangeLog, ANewCueOnAPlaceThatHasJustBeenJumpedToIsMet) {
  Stage stage(TestSong("1").Bars(9));
  stage.control.Seek(At(2));
  Replacement replacement(TestSong("1").Caesura(At(2)));
  stage.control.SetChangeLog(replacement.Get());
  EXPECT_TRUE(stage.control.HasPendingCaesura());
}

TEST(SetChangeLog, APerformersJumpStaysWhenItsVampDoes) {
  Stage stage(TestSong("1").Bars(9).Vamp(0, At(5), CL::VampExit::NextBar));
  stage.control.PlayTo(100);
  stage.control.ExitLoop();
  Jump jump;
  Replacement same(TestSong("1").Vamp(0, At(5), CL::VampExit::NextBar));
  stage.control.SetChangeLog(same.Get());
  EXPECT_TRUE(stage.control.GetPerformersJump(&jump));
  Replacement none(TestSong("1"));
  stage.control.SetChangeLog(none.Get());
  EXPECT_FALSE(stage.control.GetPerformersJump(&jump));
}

TEST(SetChangeLog, WithoutASongTheLogIsThatOfTheNextOne) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  Replacement replacement(TestSong("1").Caesura(960).Attacca());
  player.GetShowControl().SetChangeLog(replacement.Get());
  player.LoadSong("1");
  EXPECT_EQ(player.GetShowControl().GetCaesuraCountdown(), 960);
  EXPECT_EQ(player.GetShowControl().GetAttaccaState("1"), 1);
}

}  // namespace
