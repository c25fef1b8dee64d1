#include "reference_suite/player_core/gui_update/song_positions.h"

#include <gtest/gtest.h>

#include "suite/midi/song_data.h"
#include "tests/reference_suite/player_core/support/position_listener.h"
#include "tests/reference_suite/player_core/support/stage.h"

namespace {

using gui::SongPositions;
using notify::PositionUpdate;
using test_support::kBar;
using test_support::kBeat;
using test_support::PositionListener;
using test_support::Stage;
using test_support::TestSong;

PositionUpdate At(const TestSong& song, unsigned tick) {
  const tesk_midi::SongData data = song.MakeData();
  return SongPositions(&data).GetPosition(tick);
}

TEST(SongPositions, SongAndTick) {
  const PositionUpdate update = At(TestSong("2a"), 961);
  EXPECT_EQ(update.songNumber, "2a");
  EXPECT_EQ(update.tickIndex, 961U);
}

TEST(SongPositions, BarBeatAndTickInTheBeat) {
  const PositionUpdate update = At(TestSong("1"), 2 * kBar + kBeat + 7);
  EXPECT_EQ(update.bar, 3);
  EXPECT_EQ(update.beat, 2U);
  EXPECT_EQ(update.tickInBeat, 7U);
}

TEST(SongPositions, TheMeterInForce) {
  const TestSong song = TestSong("1").Meter(960, 3, 8);
  EXPECT_EQ(At(song, 959).meterNumerator, 4U);
  EXPECT_EQ(At(song, 959).meterDenominator, 4U);
  EXPECT_EQ(At(song, 960).meterNumerator, 3U);
  EXPECT_EQ(At(song, 960).meterDenominator, 8U);
}

TEST(SongPositions, TheKeyInForce) {
  const TestSong song = TestSong("1").Key(960, -3, true);
  EXPECT_EQ(At(song, 959).keySharps, 0);
  EXPECT_FALSE(At(song, 959).keyIsMinor);
  EXPECT_EQ(At(song, 960).keySharps, -3);
  EXPECT_TRUE(At(song, 960).keyIsMinor);
}

TEST(SongPositions, ThePageInForce) {
  const TestSong song = TestSong("1").Page(960, 4).Page(2000, 5);
  EXPECT_EQ(At(song, 959).page, 0U);
  EXPECT_EQ(At(song, 1999).page, 4U);
  EXPECT_EQ(At(song, 2000).page, 5U);
}

TEST(SongPositions, TheTempoInForceInQuarterNotesPerMinute) {
  const TestSong song = TestSong("1").Tempo(0, 500000).Tempo(960, 1000000);
  EXPECT_EQ(At(song, 959).tempo, 120.0);
  EXPECT_EQ(At(song, 960).tempo, 60.0);
  EXPECT_EQ(At(song, 960).scaledTempo, 60.0) << "without a control stream";
}

TEST(SongPositions, SecondsAreThoseOfTheRecordingFromTheAudioStart) {
  const TestSong song = TestSong("1").Tempo(0, 500000).Tempo(960, 1000000).AudioFrom(480);
  EXPECT_DOUBLE_EQ(At(song, 480).seconds, 0.0);
  EXPECT_DOUBLE_EQ(At(song, 960).seconds, 0.5);
  EXPECT_DOUBLE_EQ(At(song, 1440).seconds, 1.5);
}

TEST(SongPositions, ASongWithoutATempoRunsAt120) {
  TL::Timeline timeline;
  timeline.SetMidiEndTicks(960);
  const tesk_midi::SongData song("1", "name", 480, timeline);
  const SongPositions positions(&song);
  EXPECT_EQ(positions.GetPosition(480).tempo, 120.0);
  EXPECT_DOUBLE_EQ(positions.GetPosition(480).seconds, 0.5);
}

TEST(SongPositions, WithoutASongThereIsTheTickAlone) {
  const PositionUpdate update = SongPositions(nullptr).GetPosition(7);
  EXPECT_EQ(update.tickIndex, 7U);
  EXPECT_EQ(update.songNumber, "");
  EXPECT_FALSE(SongPositions().HasSong());
}

TEST(SongPositions, ScaleAndTranspositionInForceAtTheTickShown) {
  Stage stage(TestSong("1").TempoScale(960, 0.5).Transpose(2000, -2));
  stage.player.SetTempoScale(1.5);
  stage.player.SetTransposition(1);
  PositionListener listener;
  for (const unsigned tick : {0U, 960U, 2000U}) stage.player.GetGuiUpdate().ResetAndSeekToTickIndex(tick);
  const std::vector<PositionUpdate> heard = listener.GetPositions();
  ASSERT_EQ(heard.size(), 3U);
  EXPECT_EQ(heard[0].songNumber, "1");
  EXPECT_EQ(heard[0].tempoScale, 1.5);
  EXPECT_EQ(heard[0].scaledTempo, 180.0);
  EXPECT_EQ(heard[0].tempo, 120.0);
  EXPECT_EQ(heard[0].transposition, 1);
  EXPECT_EQ(heard[1].tempoScale, 0.75);
  EXPECT_EQ(heard[1].scaledTempo, 90.0);
  EXPECT_EQ(heard[2].transposition, -1);
}

}  // namespace
