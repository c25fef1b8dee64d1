#include "reference_suite/player_core/bar_grid.h"

#include <gtest/gtest.h>

#include "suite/midi/song_data.h"
#include "tests/reference_suite/player_core/support/test_show.h"

namespace {

using test_support::TestSong;

TEST(BarGrid, ASongWithoutBarsHasFourQuartersInOne) {
  const tesk_midi::SongData song = TestSong("1").WithoutBars().MakeData();
  EXPECT_EQ(player_core::GetTicksPerBeat(song, 5000), 480U);
  EXPECT_EQ(player_core::GetTicksPerBar(song, 5000), 1920U);
}

TEST(BarGrid, ABarIsThatOfTheMeterInForce) {
  const tesk_midi::SongData song = TestSong("1").Meter(0, 4, 4).Meter(1920, 6, 8).MakeData();
  EXPECT_EQ(player_core::GetTicksPerBar(song, 1919), 1920U);
  EXPECT_EQ(player_core::GetTicksPerBar(song, 1920), 1440U);
}

}  // namespace
