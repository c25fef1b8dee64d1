#include <gtest/gtest.h>

#include <climits>

#include "tests/fakes/scripted_how_to_play.h"
#include "tests/ob_show_control/control_fixture.h"

// A tick is 24 samples.

namespace {

using Factors = std::pair<long double, int>;

class DspFactors : public test_support::ControlTest {
 protected:
  DspFactors() : stream(fakes::how_to_play::GetScript()) {
    stream.now = {1.25, 2};
    stream.beforeAdvance = {0.5, -1};
    stream.beforeSeek = {0.75, -3};
  }

  Factors AtCurrentTick() {
    Factors factors;
    control->GetDspFactorsAtCurrentTickIndex(&factors.first, &factors.second);
    return factors;
  }
  Factors AtCurrentSample() {
    Factors factors;
    control->GetDspFactorsAtCurrentSampleIndex(&factors.first, &factors.second);
    return factors;
  }
  Factors At(long long sampleIndex) {
    Factors factors;
    control->GetDspFactorsAt(sampleIndex, &factors.first, &factors.second);
    return factors;
  }

  fakes::how_to_play::Script& stream;
  const Factors now{1.25L, 2};
  const Factors beforeAdvance{0.5L, -1};
  const Factors beforeSeek{0.75L, -3};
};

TEST_F(DspFactors, AtTheControlPositionTheyAreTheStreams) {
  EXPECT_EQ(AtCurrentTick(), now);
}

TEST_F(DspFactors, TheScaleIsWidenedFromADouble) {
  stream.now.tempoScale = 0.1;
  EXPECT_EQ(AtCurrentTick().first, static_cast<long double>(0.1));
  EXPECT_NE(AtCurrentTick().first, 0.1L);
}

// ---- for the sample that is read next ------------------------------------------------------------------

TEST_F(DspFactors, WhereTheAudioHasReachedTheControlPositionTheCurrentOnesApply) {
  Place(20);
  EXPECT_EQ(AtCurrentSample(), now);
  Place(20, 5);
  EXPECT_EQ(AtCurrentSample(), now);
}

TEST_F(DspFactors, WhereTheAudioIsBehindThoseFromBeforeTheAdvanceApply) {
  Place(20);
  control->PlaceTick(21);
  EXPECT_EQ(AtCurrentSample(), beforeAdvance);
}

// 13 samples into a tick of 24 the nearest tick is the next one, which begins later.
TEST_F(DspFactors, ASampleWhoseNearestTickBeginsAfterItIsJudgedByThePreviousTick) {
  Place(20, 13);
  control->PlaceTick(21);
  EXPECT_EQ(AtCurrentSample(), beforeAdvance);
  control->PlaceTick(20);
  EXPECT_EQ(AtCurrentSample(), now);
}

TEST_F(DspFactors, ASampleWhoseNearestTickBeginsBeforeItIsJudgedByThatTick) {
  Place(20, 11);
  control->PlaceTick(21);
  EXPECT_EQ(AtCurrentSample(), beforeAdvance);
  control->PlaceTick(20);
  EXPECT_EQ(AtCurrentSample(), now);
}

TEST_F(DspFactors, WhatWasHandedOutIsKept) {
  Place(20);
  AtCurrentSample();
  EXPECT_EQ(control->GetStoredDspFactors(), std::make_pair(1.25, 2));
  control->PlaceTick(21);
  AtCurrentSample();
  EXPECT_EQ(control->GetStoredDspFactors(), std::make_pair(0.5, -1));
  AtCurrentTick();
  At(0);
  EXPECT_EQ(control->GetStoredDspFactors(), std::make_pair(0.5, -1)) << "by that query alone";
}

// ---- for any sample ------------------------------------------------------------------------------------

TEST_F(DspFactors, AtTheSampleIndexTheyAreTheCurrentOnesEvenRightAfterAJump) {
  Place(20);
  Place(3);
  ASSERT_EQ(control->GetLastJumpSampleIndex(), 480);
  EXPECT_EQ(At(72), now);
}

TEST_F(DspFactors, AtTheSampleIndexTheyAreTheCurrentOnesWhereTheLastJumpWasTakenToo) {
  Place(20);
  Place(20);
  ASSERT_EQ(control->GetLastJumpSampleIndex(), control->GetSampleIndex());
  EXPECT_EQ(At(480), now);
}

TEST_F(DspFactors, WhereTheLastJumpWasTakenTheyAreThoseFromBeforeIt) {
  Place(20);
  Place(3);
  EXPECT_EQ(At(480), beforeSeek);
}

TEST_F(DspFactors, AnywhereElseTheyAreThoseOfTheTick) {
  Place(20);
  Place(3);
  stream.atTick[10] = {2.0, 10};
  stream.atTick[11] = {3.0, 11};
  EXPECT_EQ(At(240), Factors(2.0L, 10)) << "the first sample of tick 10";
  EXPECT_EQ(At(251), Factors(2.0L, 10)) << "tick 10 is nearer";
  EXPECT_EQ(At(252), Factors(2.0L, 10)) << "tick 11 is nearest and begins later";
  EXPECT_EQ(At(263), Factors(2.0L, 10));
  EXPECT_EQ(At(264), Factors(3.0L, 11));
}

TEST_F(DspFactors, AfterTheQueryTheLocksAreFree) {
  At(240);
  AtCurrentSample();
  EXPECT_TRUE(LocksAreFree());
  EXPECT_THROW(At(-1), std::logic_error);
  EXPECT_TRUE(LocksAreFree());
}

// ---- where they change next ----------------------------------------------------------------------------

TEST_F(DspFactors, ATickBeforeTheNextChangeStays) {
  stream.nextDspEvent = 100;
  EXPECT_EQ(control->ClipTickIndexToNextDspEvent(99), 99u);
  EXPECT_EQ(control->ClipTickIndexToNextDspEvent(100), 100u);
  EXPECT_EQ(control->ClipTickIndexToNextDspEvent(101), 100u);
}

TEST_F(DspFactors, WithoutAChangeEveryTickStays) {
  EXPECT_EQ(control->ClipTickIndexToNextDspEvent(UINT_MAX), UINT_MAX);
}

}  // namespace
