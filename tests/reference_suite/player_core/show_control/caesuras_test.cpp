#include <gtest/gtest.h>

#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using test_support::IsFree;
using test_support::kBar;
using test_support::kBeat;
using test_support::Stage;
using test_support::TestSong;

using Ticks = std::vector<unsigned>;

TEST(Caesuras, OneIsPendingWhenTheFrontOneLiesAtThePosition) {
  Stage stage(TestSong("1").Caesura(960).Caesura(1200));
  EXPECT_FALSE(stage.control.HasPendingCaesura());
  stage.control.MoveTo(960);
  EXPECT_TRUE(stage.control.HasPendingCaesura());
  stage.control.MoveTo(1200);  // the front one is still that at 960
  EXPECT_FALSE(stage.control.HasPendingCaesura());
}

TEST(Caesuras, PlaybackStopsAtEachOne) {
  Stage stage(TestSong("1").Bars(1).Caesura(960).Caesura(1440));
  EXPECT_EQ(stage.control.Perform(), "0..960 caesura");
  stage.control.OnCaesuraStop();
  EXPECT_EQ(stage.control.Perform(), "960..1440 caesura");
  stage.control.OnCaesuraStop();
  EXPECT_EQ(stage.control.Perform(), "1440..1920 end");
}

TEST(Caesuras, OneMayLieOnTheEndOfTheSong) {
  Stage stage(TestSong("1").Bars(1).Caesura(kBar));
  EXPECT_EQ(stage.control.Perform(), "0..1920 caesura");
  stage.control.OnCaesuraStop();
  EXPECT_EQ(stage.control.Perform(), "end");
}

TEST(Caesuras, TheCountdownIsInTicksToTheFrontOne) {
  Stage stage(TestSong("1").Caesura(960));
  EXPECT_EQ(stage.control.GetCaesuraCountdown(), 960);
  stage.control.MoveTo(900);
  EXPECT_EQ(stage.control.GetCaesuraCountdown(), 60);
  stage.control.MoveTo(960);
  EXPECT_EQ(stage.control.GetCaesuraCountdown(), 0);
  stage.control.OnCaesuraStop();
  EXPECT_EQ(stage.control.GetCaesuraCountdown(), -1);
}

TEST(Caesuras, TheFirstOnesTickOrZero) {
  Stage stage(TestSong("1").Caesura(960).Caesura(1200));
  EXPECT_EQ(stage.control.GetFirstCaesuraStackTickIndex(), 960U);
  EXPECT_EQ(Stage(TestSong("1")).control.GetFirstCaesuraStackTickIndex(), 0U);
}

TEST(Caesuras, AlignedWithTheClockIsTheFirstBeatAtOrAfter) {
  Stage stage(TestSong("1"));
  EXPECT_EQ(stage.control.GetCaesuraTickIndexAlignedWithClock(960), 960U);
  EXPECT_EQ(stage.control.GetCaesuraTickIndexAlignedWithClock(961), 1440U);
}

TEST(Caesuras, WithoutASongThereIsNoClockToAlignWith) {
  test_support::TestShow show({TestSong("1")});
  test_support::TestPlayer player(show);
  EXPECT_EQ(player.GetShowControl().GetCaesuraTickIndexAlignedWithClock(961), 961U);
}

// ---- the stop --------------------------------------------------------------------------------------

TEST(CaesuraStop, DropsTheCaesuraAndClearsTheFlag) {
  Stage stage(TestSong("1").Caesura(960).Caesura(1200));
  stage.control.MoveTo(960);
  EXPECT_EQ(stage.control.Advance(960, 1060), "caesura 960");
  stage.control.OnCaesuraStop();
  EXPECT_FALSE(stage.control.IsCaesuraStop());
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{1200}));
}

TEST(CaesuraStop, RemembersItsTickAsLastSeekTick) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.Seek(480);
  stage.control.MoveTo(960);
  stage.control.OnCaesuraStop();
  EXPECT_EQ(stage.control.GetLastSeekTickIndex(), 960U);
}

TEST(CaesuraStop, CallsTheVirtualResetOfTheUpdatesWithoutItsOwnLock) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(960);
  std::string calls;
  stage.control.onCall = [&](const std::string& call) {
    calls += call + " ";
    EXPECT_TRUE(IsFree(*stage.control.GetLock()));
  };
  stage.control.OnCaesuraStop();
  EXPECT_EQ(calls, "ResetGuiUpdate ");
}

TEST(CaesuraStop, LeavesCaesurasThatLieAheadAlone) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(480);
  stage.control.OnCaesuraStop();
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{960}));
}

TEST(CaesuraStop, PlaybackStandsThereUntilItGoesOnOrMoves) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(960);
  EXPECT_FALSE(stage.control.StandsAtCaesura());
  stage.control.OnCaesuraStop();
  EXPECT_TRUE(stage.control.StandsAtCaesura());
  stage.control.LeaveCaesura();
  EXPECT_FALSE(stage.control.StandsAtCaesura());
  stage.control.OnCaesuraStop();
  stage.control.Seek(0);
  EXPECT_FALSE(stage.control.StandsAtCaesura());
  stage.control.OnCaesuraStop();
  stage.player.LoadSong("1");
  EXPECT_FALSE(stage.control.StandsAtCaesura());
}

TEST(CaesuraStop, OnceTheFermataIsReadPlaybackIsAboutToStand) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.ClearFermataCanceledCaesura();
  EXPECT_FALSE(stage.control.StandsAtCaesura());  // not there yet
  EXPECT_EQ(stage.control.Perform(), "0..960 caesura");
  stage.control.ClearFermataCanceledCaesura();
  EXPECT_TRUE(stage.control.StandsAtCaesura());
  Stage called(TestSong("1").Caesura(960).Caesura(961));
  EXPECT_EQ(called.control.Perform(), "0..960 caesura");
  bool isReached = false;
  called.control.CancelCaesura(&isReached);
  called.control.ClearFermataCanceledCaesura();
  EXPECT_FALSE(called.control.StandsAtCaesura());
}

TEST(CaesuraStop, AGoThatCameTooLateDoesNotPassTheNextOneBy) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.MoveTo(960);
  stage.control.Advance(960, 1060);
  bool isReached = false;
  ASSERT_TRUE(stage.control.CancelCaesura(&isReached));
  ASSERT_TRUE(stage.control.GetFermataCanceledCaesura());
  stage.control.OnCaesuraStop();
  EXPECT_FALSE(stage.control.GetFermataCanceledCaesura());
}

// ---- passing one by --------------------------------------------------------------------------------

TEST(CancelCaesura, TakesOneWithinABarOutOfTheWay) {
  Stage stage(TestSong("1").Bars(4).Caesura(2 * kBar).Caesura(3 * kBar));
  stage.control.MoveTo(kBar);
  bool isReached = true;
  EXPECT_TRUE(stage.control.CancelCaesura(&isReached));
  EXPECT_FALSE(isReached);
  EXPECT_FALSE(stage.control.GetFermataCanceledCaesura());
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{3 * kBar}));
}

TEST(CancelCaesura, OneFartherThanABarIsLeftAlone) {
  Stage stage(TestSong("1").Caesura(2 * kBar));
  stage.control.MoveTo(kBar - 1);
  bool isReached = true;
  EXPECT_FALSE(stage.control.CancelCaesura(&isReached));
  EXPECT_FALSE(isReached);
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (Ticks{2 * kBar}));
}

TEST(CancelCaesura, ABarIsAsLongAsTheMeterAtThePositionSays) {
  Stage stage(TestSong("1").Meter(0, 3, 4).Caesura(3 * kBeat + 1));
  bool isReached = false;
  EXPECT_FALSE(stage.control.CancelCaesura(&isReached));
  stage.control.MoveTo(1);
  EXPECT_TRUE(stage.control.CancelCaesura(&isReached));
}

TEST(CancelCaesura, WhenTheReadsHaveComeToItTheFermataIsCanceled) {
  Stage stage(TestSong("1").Caesura(960));
  EXPECT_EQ(stage.control.Perform(), "0..960 caesura");
  bool isReached = false;
  EXPECT_TRUE(stage.control.CancelCaesura(&isReached));
  EXPECT_TRUE(isReached);
  EXPECT_TRUE(stage.control.GetFermataCanceledCaesura());
  stage.control.ClearFermataCanceledCaesura();
  EXPECT_FALSE(stage.control.GetFermataCanceledCaesura());
}

TEST(CancelCaesura, WhenTheReadsHaveJumpedOntoItTheFermataIsCanceled) {
  Stage stage(TestSong("1").Cut(960, 3000).Caesura(3000));
  EXPECT_EQ(stage.control.Perform(), "0..960 caesura");
  bool isReached = false;
  EXPECT_TRUE(stage.control.CancelCaesura(&isReached));
  EXPECT_TRUE(isReached);
}

TEST(CancelCaesura, AtTheEndOfTheSongTheFermataIsCanceled) {
  Stage stage(TestSong("1").Bars(1).Caesura(kBar));
  EXPECT_EQ(stage.control.Perform(), "0..1920 caesura");
  bool isReached = false;
  EXPECT_TRUE(stage.control.CancelCaesura(&isReached));
  EXPECT_TRUE(isReached);
}

TEST(CancelCaesura, WhenOnlyTheReadBeforeItIsPlannedItIsNotReachedYet) {
  Stage stage(TestSong("1").Caesura(960));
  stage.control.PlayTo(960);  // no plan from 960 yet
  bool isReached = true;
  EXPECT_TRUE(stage.control.CancelCaesura(&isReached));
  EXPECT_FALSE(isReached);
  EXPECT_FALSE(stage.control.GetFermataCanceledCaesura());
}

TEST(CancelCaesura, WithNoneAheadNothingHappens) {
  Stage stage(TestSong("1"));
  bool isReached = true;
  EXPECT_FALSE(stage.control.CancelCaesura(&isReached));
  EXPECT_FALSE(isReached);
}

}  // namespace
