#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/ob_show_control/control_fixture.h"

namespace {

class Caesuras : public test_support::ControlTest {};

TEST_F(Caesuras, AnEmptyQueueGivesMinus1) {
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(0), -1);
}

TEST_F(Caesuras, ACaesuraAheadGivesItsFirstSample) {
  control->AddCaesura(50);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(0), 1200);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(1199), 1200);
}

TEST_F(Caesuras, AtTheFirstSampleOfTheCaesurasTickItGivesItsArgument) {
  control->AddCaesura(50);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(1200), 1200);
}

TEST_F(Caesuras, OneSampleLaterItGivesMinus1) {
  control->AddCaesura(50);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(1201), -1);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(1224), -1);
}

TEST_F(Caesuras, OnlyTheFrontOfTheQueueIsConsulted) {
  control->AddCaesura(50);
  control->AddCaesura(60);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(1201), -1) << "although one follows";
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(0), 1200);
}

TEST_F(Caesuras, ItsArgumentAndNotThePositionCounts) {
  control->AddCaesura(50);
  Place(60);
  EXPECT_EQ(control->GetNextCaesuraSampleIndex(0), 1200);
}

TEST_F(Caesuras, ASampleBeforeTheSongIsAnErrorWithoutACaesuraToo) {
  EXPECT_THROW(control->GetNextCaesuraSampleIndex(-1), std::logic_error);
}

}  // namespace
