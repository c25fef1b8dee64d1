#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/reference_suite/player_core/support/stage.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::kBar;
using test_support::kBeat;
using test_support::Stage;
using test_support::TestPlayer;
using test_support::TestShow;
using test_support::TestSong;
using test_support::ThrowsWithText;

unsigned LeftFrom(Stage& stage, unsigned shown) {
  stage.player.GetGuiUpdate().ResetAndSeekToTickIndex(shown);
  return stage.control.GetSeekLeft();
}

unsigned RightFrom(Stage& stage, unsigned shown) {
  stage.player.GetGuiUpdate().ResetAndSeekToTickIndex(shown);
  return stage.control.GetSeekRight();
}

TEST(SeekRight, GoesToTheNextPlaceOfEveryKind) {
  Stage stage(TestSong("1")
                  .Bars(40)
                  .AudioFrom(100)
                  .Marker(3 * kBar)
                  .Caesura(6 * kBar)
                  .Vamp(9 * kBar, 10 * kBar)
                  .Cut(12 * kBar, 20 * kBar));
  EXPECT_EQ(RightFrom(stage, 0), 100U);
  EXPECT_EQ(RightFrom(stage, 100), 3 * kBar);
  EXPECT_EQ(RightFrom(stage, 3 * kBar), 6 * kBar);
  EXPECT_EQ(RightFrom(stage, 6 * kBar), 9 * kBar);
  EXPECT_EQ(RightFrom(stage, 9 * kBar), 20 * kBar);
}

TEST(SeekRight, PlacesOfAllKindsComeInTheOrderOfTheSong) {
  Stage stage(
      TestSong("1").Marker(12 * kBar).Caesura(9 * kBar).Vamp(6 * kBar, 7 * kBar).Cut(2 * kBar, 3 * kBar));
  EXPECT_EQ(RightFrom(stage, 0), 3 * kBar);
  EXPECT_EQ(RightFrom(stage, 3 * kBar), 6 * kBar);
  EXPECT_EQ(RightFrom(stage, 6 * kBar), 9 * kBar);
  EXPECT_EQ(RightFrom(stage, 9 * kBar), 12 * kBar);
}

TEST(SeekRight, PastTheLastPlaceItThrows) {
  Stage stage(TestSong("1").Marker(kBar));
  EXPECT_TRUE(ThrowsWithText<std::out_of_range>([&] { RightFrom(stage, kBar); },
                                                "No place to seek to after tick 1920."));
}

TEST(SeekRight, WithoutASongItThrows) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  EXPECT_TRUE(ThrowsWithText<std::out_of_range>([&] { player.GetShowControl().GetSeekRight(); },
                                                "No place to seek to after tick 0."));
}

TEST(SeekRight, PlacesOutsideTheSongAreNone) {
  Stage stage(TestSong("1")
                  .Bars(10)
                  .AudioFrom(960)
                  .AudioTo(5 * kBar)
                  .Marker(10)
                  .Cut(kBar, 10 * kBar)
                  .Caesura(5 * kBar));
  EXPECT_EQ(RightFrom(stage, 0), 960U);
  EXPECT_EQ(RightFrom(stage, 960), 5 * kBar);
  EXPECT_THROW(RightFrom(stage, 5 * kBar), std::out_of_range);
}

TEST(SeekRight, StartsFromTheShownPositionNotFromThePlannedOne) {
  Stage stage(TestSong("1").Marker(kBar).Marker(2 * kBar));
  stage.control.MoveTo(kBar + 10);
  EXPECT_EQ(RightFrom(stage, kBar - 10), kBar);
}

TEST(SeekLeft, GoesToThePreviousPlace) {
  Stage stage(TestSong("1").Marker(kBar).Marker(2 * kBar));
  EXPECT_EQ(LeftFrom(stage, 3 * kBar), 2 * kBar);
  EXPECT_EQ(LeftFrom(stage, 2 * kBar + kBeat), 2 * kBar);
}

TEST(SeekLeft, LessThanABeatIntoAPlaceItGoesToTheOneBefore) {
  Stage stage(TestSong("1").Marker(kBar).Marker(2 * kBar));
  EXPECT_EQ(LeftFrom(stage, 2 * kBar + kBeat - 1), kBar);
  EXPECT_EQ(LeftFrom(stage, 2 * kBar), kBar);
}

TEST(SeekLeft, OnAPlaceItGoesNoFurtherThanTheOneBefore) {
  Stage stage(TestSong("1").Marker(kBar).Marker(2 * kBar).Marker(2 * kBar + 100));
  EXPECT_EQ(LeftFrom(stage, 2 * kBar + 100), 2 * kBar);
}

TEST(SeekLeft, TwoCuesAtOneTickAreOnePlace) {
  Stage stage(TestSong("1").Marker(kBar).Marker(2 * kBar).Caesura(2 * kBar));
  EXPECT_EQ(LeftFrom(stage, 2 * kBar + 10), kBar);
}

TEST(SeekLeft, TheBeatIsThatOfTheMeter) {
  Stage stage(TestSong("1").Meter(0, 6, 8).Marker(1440).Marker(2880));
  EXPECT_EQ(LeftFrom(stage, 2880 + 239), 1440U);
  EXPECT_EQ(LeftFrom(stage, 2880 + 240), 2880U);
}

TEST(SeekLeft, NothingLiesBeforeTheStartOfTheSong) {
  Stage stage(TestSong("1").AudioFrom(960).Marker(kBar));
  EXPECT_EQ(LeftFrom(stage, kBar - 10), 960U);
  EXPECT_EQ(LeftFrom(stage, 960), 960U);
  EXPECT_EQ(LeftFrom(stage, 0), 960U);
}

TEST(SeekLeft, WithoutASongItIsTheStart) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  EXPECT_EQ(player.GetShowControl().GetSeekLeft(), 0U);
}

TEST(SeekLeft, ASongWithoutBarsCountsInFour) {
  Stage stage(TestSong("1").WithoutBars().Marker(kBar));
  EXPECT_EQ(LeftFrom(stage, kBar + kBeat - 1), 0U);
  EXPECT_EQ(LeftFrom(stage, kBar + kBeat), kBar);
}

}  // namespace
