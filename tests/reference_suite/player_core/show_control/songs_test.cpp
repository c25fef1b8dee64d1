#include <gtest/gtest.h>

#include "suite/player_core/errors.h"
#include "tests/reference_suite/player_core/support/stage.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::Stage;
using test_support::TestPlayer;
using test_support::TestShow;
using test_support::TestSong;
using test_support::ThrowsWithText;

TEST(RunningOrder, SongsFollowEachOtherAsTheShowSays) {
  Stage stage({TestSong("2"), TestSong("10"), TestSong("1")});
  EXPECT_EQ(stage.control.GetSongAfter("2"), "10");
  EXPECT_EQ(stage.control.GetSongAfter("10"), "1");
  EXPECT_EQ(stage.control.GetSongBefore("1"), "10");
  EXPECT_EQ(stage.control.GetSongBefore("10"), "2");
}

TEST(RunningOrder, AtTheEndsItThrowsAndNamesTheSong) {
  Stage stage({TestSong("1"), TestSong("2a")});
  EXPECT_TRUE(ThrowsWithText<EndOfShow>([&] { stage.control.GetSongAfter("2a"); }, "No song after 2a."));
  EXPECT_TRUE(ThrowsWithText<StartOfShow>([&] { stage.control.GetSongBefore("1"); }, "No song before 1."));
}

TEST(RunningOrder, ASongThatIsNotInItHasNoNeighbours) {
  Stage stage({TestSong("1"), TestSong("2")});
  EXPECT_TRUE(ThrowsWithText<EndOfShow>([&] { stage.control.GetSongAfter("7"); }, "No song after 7."));
  EXPECT_TRUE(ThrowsWithText<StartOfShow>([&] { stage.control.GetSongBefore("7"); }, "No song before 7."));
}

TEST(RunningOrder, SongsThatAreLeftOutArePassedOver) {
  Stage stage({TestSong("1"), TestSong("2"), TestSong("3"), TestSong("4")});
  stage.show.data.LeaveOut("2");
  stage.show.data.LeaveOut("4");
  EXPECT_EQ(stage.control.GetSongAfter("1"), "3");
  EXPECT_EQ(stage.control.GetSongBefore("3"), "1");
  EXPECT_TRUE(ThrowsWithText<EndOfShow>([&] { stage.control.GetSongAfter("3"); }, "No song after 3."));
  EXPECT_EQ(stage.control.GetSongAfter("2"), "3");  // from a song that is left out itself
}

TEST(SongIsNotSkip, SkippedAndLeftOutSongsAreNotPreloaded) {
  Stage stage({TestSong("1"), TestSong("2").Skip(), TestSong("3")});
  stage.show.data.LeaveOut("3");
  EXPECT_TRUE(stage.control.SongIsNotSkip("1"));
  EXPECT_FALSE(stage.control.SongIsNotSkip("2"));
  EXPECT_FALSE(stage.control.SongIsNotSkip("3"));
}

TEST(AttaccaState, IsTheLogsUntilTheHostSetsIt) {
  Stage stage({TestSong("1").Attacca(), TestSong("2")});
  EXPECT_EQ(stage.control.GetAttaccaState("1"), 1);
  EXPECT_EQ(stage.control.GetAttaccaState("2"), 0);
  stage.player.SetAttaccaState("1", 0);
  stage.player.SetAttaccaState("2", 1);
  EXPECT_EQ(stage.control.GetAttaccaState("1"), 0);
  EXPECT_EQ(stage.control.GetAttaccaState("2"), 1);
}

TEST(CurrentSongIsAttacca, NeedsTheStateAndANextSongWithAudio) {
  Stage stage({TestSong("1").Attacca(), TestSong("2"), TestSong("3")});
  EXPECT_TRUE(stage.player.CurrentSongIsAttacca());
  stage.player.SetAttaccaState("1", 0);
  EXPECT_FALSE(stage.player.CurrentSongIsAttacca());
}

TEST(CurrentSongIsAttacca, ALastSongRunsIntoNothing) {
  Stage stage({TestSong("1"), TestSong("2").Attacca()});
  stage.player.LoadSong("2");
  EXPECT_FALSE(stage.player.CurrentSongIsAttacca());
}

TEST(CurrentSongIsAttacca, SongsWithoutAudioAreNoNextSong) {
  Stage stage({TestSong("1").Attacca(), TestSong("2"), TestSong("3")});
  stage.show.data.SetHasNoAudio("2");
  EXPECT_TRUE(stage.player.CurrentSongIsAttacca());
  stage.show.data.SetHasNoAudio("3");
  EXPECT_FALSE(stage.player.CurrentSongIsAttacca());
}

TEST(CurrentSongIsAttacca, SongsThatAreLeftOutAreNoNextSong) {
  Stage stage({TestSong("1").Attacca(), TestSong("2")});
  stage.show.data.LeaveOut("2");
  EXPECT_FALSE(stage.player.CurrentSongIsAttacca());
}

TEST(CurrentSongIsAttacca, WithoutASongNothingRunsOn) {
  TestShow show({TestSong("1").Attacca(), TestSong("2")});
  TestPlayer player(show);
  EXPECT_FALSE(player.CurrentSongIsAttacca());
}

}  // namespace
