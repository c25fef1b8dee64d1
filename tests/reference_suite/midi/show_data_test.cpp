#include "suite/midi/show_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/throws_with_text.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

tesk_midi::SongData Song(const std::string& number, const std::string& name) {
  return tesk_midi::SongData(number, name, 480, {});
}

TEST(ShowData, NamesAreOrderedByValueAndFreshEachTime) {
  tesk_midi::ShowData show;
  show.AddSong(Song("10", "Finale"));
  show.AddSong(Song("2a", "Intro"));
  show.AddSong(Song("2", "Opening Night"));
  auto names = show.GetSongNamesBySongNumber();
  EXPECT_THAT(names, ElementsAre(Pair("2", "Opening Night"), Pair("2a", "Intro"), Pair("10", "Finale")));
  names.clear();
  EXPECT_EQ(show.GetSongNamesBySongNumber().size(), 3u);
}

TEST(ShowData, KnowsItsSongs) {
  tesk_midi::ShowData show;
  show.AddSong(Song("2", "Intro"));
  EXPECT_TRUE(show.HasSong("2"));
  EXPECT_FALSE(show.HasSong("02"));
  EXPECT_EQ(show.GetSong("2").GetName(), "Intro");
  EXPECT_TRUE(
      test_support::ThrowsWithText<std::out_of_range>([&] { show.GetSong("7"); }, "The show has no song 7."));
}

TEST(ShowData, SongOfOneNumberReplacesTheOther) {
  tesk_midi::ShowData show;
  show.AddSong(Song("2", "Intro"));
  show.AddSong(Song("2", "Prologue"));
  EXPECT_THAT(show.GetSongNamesBySongNumber(), ElementsAre(Pair("2", "Prologue")));
}

TEST(ShowData, RunningOrderIsAsSet) {
  tesk_midi::ShowData show;
  show.SetRunningOrder({"10", "2"});
  EXPECT_THAT(show.GetRunningOrder(), ElementsAre("10", "2"));
}

TEST(ShowData, LeavesOutOnlyWhatItIsTold) {
  tesk_midi::ShowData show;
  show.AddSong(Song("2", "Intro"));
  show.AddSong(Song("3", "Waltz"));
  show.LeaveOut("2");
  EXPECT_TRUE(show.IsLeftOut("2"));
  EXPECT_FALSE(show.IsLeftOut("3"));
  EXPECT_TRUE(show.HasSong("2"));
}

}  // namespace
