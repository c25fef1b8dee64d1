#include <gtest/gtest.h>

#include <stdexcept>

#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"
#include "tests/reference_suite/player_core/support/stage.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::kBar;
using test_support::Stage;
using test_support::TestPlayer;
using test_support::TestShow;
using test_support::TestSong;
using test_support::ThrowsWithText;

TEST(LoadSong, TakesOverDataAndLogInThisOrder) {
  Stage stage(TestSong("1"));
  std::string calls;
  stage.control.onCall = [&](const std::string& call) { calls += call + "; "; };
  stage.control.LoadSong();
  EXPECT_EQ(calls, "LoadStartAndEndTickIndices; SetDataOnGuiAndHowToPlay; FinishLoadingSongLog; ");
}

TEST(LoadSong, StandsAtTheStartOfTheSong) {
  Stage stage({TestSong("1"), TestSong("2").AudioFrom(960).Caesura(2000).Vamp(3000, 4000).Bars(8)});
  stage.control.Seek(5000);
  stage.player.LoadSong("2");
  EXPECT_EQ(stage.control.GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetLastSeekTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetHowToPlay().GetTickIndex(), 960U);
  EXPECT_EQ(stage.control.GetMidiEnd(), 8 * kBar);
  EXPECT_EQ(stage.control.GetCaesurasAhead(), (std::vector<unsigned>{2000}));
  EXPECT_EQ(stage.control.GetLoopsAhead().size(), 1U);
  EXPECT_EQ(stage.control.GetCurrentSongData().GetNumber(), "2");
  EXPECT_EQ(stage.control.GetCurrentSongLog().loops.GetSize(), 1U);
}

TEST(LoadSong, TheCuesOfTheSongBeforeAreGone) {
  Stage stage({TestSong("1").Caesura(960).Cut(1000, 2000).Vamp(0, 500), TestSong("2").Bars(1)});
  stage.player.LoadSong("2");
  EXPECT_EQ(stage.control.Perform(), "0..1920 end");
}

TEST(LoadSong, TheControlStreamHasTheSongsValues) {
  Stage stage({TestSong("1"), TestSong("2").TempoScale(0, 0.5)});
  stage.player.LoadSong("2");
  EXPECT_EQ(stage.control.GetHowToPlay().GetTempoScaleValue(), 0.5);
}

TEST(LoadSong, ForgetsFlagsAndFermataOfTheSongBefore) {
  Stage stage({TestSong("1").Caesura(0), TestSong("2")});
  stage.control.Advance(0, 100);
  bool isReached = false;
  stage.control.CancelCaesura(&isReached);
  stage.player.LoadSong("2");
  EXPECT_FALSE(stage.control.IsCaesuraStop());
  EXPECT_FALSE(stage.control.GetFermataCanceledCaesura());
}

TEST(LoadSong, ForgetsAJumpOfTheSongBeforeThatWasArmed) {
  Stage stage({TestSong("1").Vamp(0, 480), TestSong("2").AudioFrom(480)});
  stage.control.PlayTo(480);
  stage.control.ProcessLoopEventsAtCurrentTickIndex();
  stage.player.LoadSong("2");
  EXPECT_EQ(stage.control.Advance(480, 580), "580");
}

TEST(LoadSong, WithoutAnActiveSongThrows) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  EXPECT_TRUE(
      ThrowsWithText<std::out_of_range>([&] { player.GetShowControl().LoadSong(); }, "No song is active."));
}

TEST(LoadSong, OfASongThatTheShowDoesNotHaveThrowsAndKeepsTheOneBefore) {
  Stage stage(TestSong("1"));
  EXPECT_THROW(stage.player.LoadSong("9"), std::out_of_range);
  EXPECT_EQ(stage.control.GetCurrentSongData().GetNumber(), "1");
}

TEST(LoadSong, WithoutAChangeLogASongHasNoCues) {
  TestShow show({TestSong("1").Bars(1).Caesura(960)});
  TestPlayer player(show);
  // The base takes a pointer, which may be null.
  class WithoutLog : public ShowControl {
   public:
    WithoutLog(TestPlayer& owner, TestShow& data)
        : ShowControl(owner.GetActiveSongNumberRef(), data.data, nullptr), owner_(owner) {}
    unsigned GetStartTickIndex() override { return 0; }
    unsigned GetEndTickIndex() override { return kBar; }
    gui::GuiUpdate& GetGuiUpdate() override { return owner_.GetGuiUpdate(); }
    HowToPlay& GetHowToPlay() override { return owner_.GetShowControl().GetHowToPlay(); }

   private:
    TestPlayer& owner_;
  };
  WithoutLog control(player, show);
  player.SetActiveSongNumber("1");
  control.LoadSong();
  EXPECT_EQ(control.GetCaesuraCountdown(), -1);
  EXPECT_EQ(control.GetAttaccaState("1"), 0);
  EXPECT_TRUE(control.SongIsNotSkip("1"));
}

TEST(LoadedSong, WithoutOneThereIsNeitherDataNorLog) {
  TestShow show({TestSong("1")});
  TestPlayer player(show);
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { player.GetShowControl().GetCurrentSongData(); },
                                               "No song is loaded."));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { player.GetShowControl().GetCurrentSongLog(); },
                                               "No song is loaded."));
}

TEST(LoadedSong, NobodyElsesClockIsFollowed) {
  Stage stage(TestSong("1"));
  stage.control.FollowClock(true);
  EXPECT_FALSE(stage.control.FollowsClock());
}

}  // namespace
