#include "suite/midi/how_to_play.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "suite/midi/song_log.h"
#include "suite/midi/timeline.h"
#include "suite/midi/transients.h"
#include "tests/support/allocation_watch.h"

namespace {

constexpr unsigned kNever = std::numeric_limits<unsigned>::max();

// Scale 0.5 from 960, 3.0 from 1920; three semitones down from 960, 23 up from 2880.
class HowToPlayTest : public testing::Test {
 protected:
  HowToPlayTest() {
    log_.tempoScales.Add(CL::TempoScale(960, 0.5, 1));
    log_.tempoScales.Add(CL::TempoScale(1920, 3.0, 2));
    log_.transposes.Add(CL::Transpose(960, -3, 3));
    log_.transposes.Add(CL::Transpose(2880, 23, 4));
    timeline_.SetMidiEndTicks(7680);
    howToPlay_.SetData(log_, timeline_, 0);
  }

  CL::SongLog log_;
  TL::Timeline timeline_;
  Transients transients_;
  HowToPlay howToPlay_{transients_};
};

TEST(HowToPlay, BeforeAnySongNothingIsChanged) {
  Transients transients;
  HowToPlay howToPlay(transients);
  EXPECT_EQ(howToPlay.GetTickIndex(), 0u);
  EXPECT_EQ(howToPlay.GetTempoScaleValue(), 1.0);
  EXPECT_EQ(howToPlay.GetTranspositionValue(), 0);
  EXPECT_EQ(howToPlay.GetTickIndexOfNextDspEvent(), kNever);
  EXPECT_EQ(howToPlay.GetEndTickIndex(), 0u);
}

TEST_F(HowToPlayTest, SetDataStandsAtTheStartTick) {
  howToPlay_.SetData(log_, timeline_, 1000);
  EXPECT_EQ(howToPlay_.GetTickIndex(), 1000u);
  EXPECT_EQ(howToPlay_.GetTempoScaleValue(), 0.5);
  EXPECT_EQ(howToPlay_.GetTranspositionValue(), -3);
  EXPECT_EQ(howToPlay_.GetEndTickIndex(), 7680u);
  EXPECT_EQ(howToPlay_.GetPreSeekTempoScale(), 0.5);
  EXPECT_EQ(howToPlay_.GetPreSeekPitchShift(), -3);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 0.5);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTransposition(), -3);
}

TEST_F(HowToPlayTest, ValuesOfAnyTickDoNotMoveThePosition) {
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(959), 1.0);
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(960), 0.5);
  EXPECT_EQ(howToPlay_.GetTranspositionValueAtTickIndex(2879), -3);
  EXPECT_EQ(howToPlay_.GetTranspositionValueAtTickIndex(2880), 23);
  EXPECT_EQ(howToPlay_.GetTickIndex(), 0u);
  EXPECT_EQ(howToPlay_.GetTempoScaleValue(), 1.0);
}

TEST_F(HowToPlayTest, AdvanceKeepsTheValuesBeforeIt) {
  howToPlay_.AdvanceToTickIndex(960);
  EXPECT_EQ(howToPlay_.GetTickIndex(), 960u);
  EXPECT_EQ(howToPlay_.GetTempoScaleValue(), 0.5);
  EXPECT_EQ(howToPlay_.GetTranspositionValue(), -3);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 1.0);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTransposition(), 0);
  howToPlay_.AdvanceToTickIndex(961);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 0.5);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTransposition(), -3);
}

TEST_F(HowToPlayTest, SeekKeepsTheValuesBeforeIt) {
  howToPlay_.AdvanceToTickIndex(960);
  howToPlay_.Seek(2880);
  EXPECT_EQ(howToPlay_.GetTickIndex(), 2880u);
  EXPECT_EQ(howToPlay_.GetPreSeekTempoScale(), 0.5);
  EXPECT_EQ(howToPlay_.GetPreSeekPitchShift(), -3);
  EXPECT_EQ(howToPlay_.GetTempoScaleValue(), 3.0);
  EXPECT_EQ(howToPlay_.GetTranspositionValue(), 23);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 1.0) << "a seek is no advance";
  howToPlay_.Seek(0);
  EXPECT_EQ(howToPlay_.GetPreSeekTempoScale(), 3.0);
  EXPECT_EQ(howToPlay_.GetTempoScaleValue(), 1.0);
}

TEST_F(HowToPlayTest, NextDspEventLiesStrictlyAfterThePosition) {
  EXPECT_EQ(howToPlay_.GetTickIndexOfNextDspEvent(), 960u);
  howToPlay_.AdvanceToTickIndex(959);
  EXPECT_EQ(howToPlay_.GetTickIndexOfNextDspEvent(), 960u);
  howToPlay_.AdvanceToTickIndex(960);
  EXPECT_EQ(howToPlay_.GetTickIndexOfNextDspEvent(), 1920u);
  howToPlay_.AdvanceToTickIndex(2880);
  EXPECT_EQ(howToPlay_.GetTickIndexOfNextDspEvent(), kNever);
}

TEST_F(HowToPlayTest, TransientScaleMultipliesTheLogsAndIsLimited) {
  transients_.SetTempoScale(1.2);
  EXPECT_EQ(howToPlay_.GetTempoScaleValue(), 1.2);
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(960), 0.6);
  transients_.SetTempoScale(0.3);
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(960), 0.25) << "0.15 is too slow";
  transients_.SetTempoScale(2.0);
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(1920), 4.0) << "6 is too fast";
  transients_.SetTempoScale(std::numeric_limits<double>::max());
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(1920), 4.0) << "the product is infinite";
}

TEST_F(HowToPlayTest, TransientTranspositionAddsToTheLogsAndIsLimited) {
  transients_.SetTransposition(2);
  EXPECT_EQ(howToPlay_.GetTranspositionValue(), 2);
  EXPECT_EQ(howToPlay_.GetTranspositionValueAtTickIndex(960), -1);
  EXPECT_EQ(howToPlay_.GetTranspositionValueAtTickIndex(2880), 24) << "25 is too high";
  transients_.SetTransposition(-22);
  EXPECT_EQ(howToPlay_.GetTranspositionValueAtTickIndex(960), -24) << "-25 is too low";
  transients_.SetTransposition(INT_MAX);
  EXPECT_EQ(howToPlay_.GetTranspositionValueAtTickIndex(2880), 24);
  transients_.SetTransposition(INT_MIN);
  EXPECT_EQ(howToPlay_.GetTranspositionValueAtTickIndex(960), -24);
}

TEST_F(HowToPlayTest, RepeatedTransientChangesApplyFromTheNextReadOn) {
  transients_.SetTempoScale(0.9);
  howToPlay_.AdvanceToTickIndex(10);  // a read is planned ...
  transients_.SetTempoScale(0.8);     // ... and no change reaches it any more
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 0.9);
  transients_.SetTempoScale(0.7);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 0.9);
  howToPlay_.AdvanceToTickIndex(20);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 0.7);
  howToPlay_.AdvanceToTickIndex(30);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 0.7);
}

TEST_F(HowToPlayTest, PreValuesAreLimitedToo) {
  howToPlay_.Seek(1920);
  transients_.SetTempoScale(2.0);
  howToPlay_.AdvanceToTickIndex(1921);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 4.0);
  howToPlay_.Seek(0);
  EXPECT_EQ(howToPlay_.GetPreSeekTempoScale(), 4.0);
}

TEST_F(HowToPlayTest, HighSpeedLiftsTheLimitToSixteen) {
  transients_.SetTempoScale(4.0);
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(1920), 4.0);
  howToPlay_.SetHighSpeed();
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(1920), 12.0);
  transients_.SetTempoScale(100.0);
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(1920), 16.0);
  transients_.SetTempoScale(0.01);
  EXPECT_EQ(howToPlay_.GetTempoScaleValueAtTickIndex(1920), 0.25);
}

TEST_F(HowToPlayTest, LimitsOfTheTempoScale) {
  EXPECT_EQ(howToPlay_.LimitTempoScaleToAllowedRange(0.2), 0.25);
  EXPECT_EQ(howToPlay_.LimitTempoScaleToAllowedRange(0.25), 0.25);
  EXPECT_EQ(howToPlay_.LimitTempoScaleToAllowedRange(1.5), 1.5);
  EXPECT_EQ(howToPlay_.LimitTempoScaleToAllowedRange(4.0), 4.0);
  EXPECT_EQ(howToPlay_.LimitTempoScaleToAllowedRange(4.1), 4.0);
  EXPECT_EQ(howToPlay_.LimitTempoScaleToAllowedRange(std::nan("")), 0.25);
}

// A stream may have limits of its own.
class Steady : public HowToPlay {
 public:
  using HowToPlay::HowToPlay;
  double LimitTempoScaleToAllowedRange(double) override { return 1.0; }
};

TEST_F(HowToPlayTest, ValuesPassThroughTheVirtualLimit) {
  Steady steady(transients_);
  steady.SetData(log_, timeline_, 960);
  EXPECT_EQ(steady.GetTempoScaleValue(), 1.0);
  EXPECT_EQ(steady.GetTempoScaleValueAtTickIndex(1920), 1.0);
  EXPECT_EQ(steady.GetPreSeekTempoScale(), 1.0);
  EXPECT_EQ(steady.GetPreAdvanceTempoScale(), 1.0);
}

TEST_F(HowToPlayTest, FollowingAClockIsAnAdvance) {
  howToPlay_.FollowClock(960, 0.001);
  EXPECT_EQ(howToPlay_.GetTickIndex(), 960u);
  EXPECT_EQ(howToPlay_.GetPreAdvanceTempoScale(), 1.0);
}

TEST_F(HowToPlayTest, MovesAndQueriesAllocateNothing) {
  test_support::AllocationWatch watch;
  howToPlay_.AdvanceToTickIndex(960);
  howToPlay_.Seek(2000);
  howToPlay_.GetTempoScaleValue();
  howToPlay_.GetTranspositionValue();
  howToPlay_.GetTempoScaleValueAtTickIndex(960);
  howToPlay_.GetTranspositionValueAtTickIndex(960);
  howToPlay_.GetPreSeekTempoScale();
  howToPlay_.GetPreSeekPitchShift();
  howToPlay_.GetPreAdvanceTempoScale();
  howToPlay_.GetPreAdvanceTransposition();
  howToPlay_.GetTickIndexOfNextDspEvent();
  howToPlay_.GetTickIndex();
  howToPlay_.GetEndTickIndex();
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
