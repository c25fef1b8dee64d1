#include <gtest/gtest.h>

#include <functional>

#include "tests/fakes/journal.h"
#include "tests/fakes/planning_show_control.h"
#include "tests/ob_show_control/control_fixture.h"

namespace {

using fakes::TakeJournal;
using test_support::Journal;

class Seek : public test_support::ControlTest {
 protected:
  Seek() { Load({.midiEnd = 1000, .audioEnd = 500}); }
};

TEST_F(Seek, ToTheEndIsPassedToTheBase) {
  EXPECT_FALSE(control->Seek(500));
  EXPECT_EQ(TakeJournal().front(), "base.Seek 500");
  EXPECT_EQ(control->GetTickIndex(), 500u);
}

TEST_F(Seek, OneTickPastTheEndChangesNothing) {
  Place(20);
  EXPECT_TRUE(control->Seek(501));
  EXPECT_EQ(TakeJournal(), Journal());
  EXPECT_EQ(control->GetTickIndex(), 20u);
  EXPECT_EQ(control->GetSampleIndex(), 480);
}

TEST_F(Seek, WhenTheBaseMovesNothingThatIsAll) {
  control->AddCaesura(0);
  fakes::planning::GetScript().seekMovesNothing = true;
  EXPECT_TRUE(control->Seek(0));
  EXPECT_EQ(TakeJournal(), Journal{"base.Seek 0"});
  EXPECT_EQ(caesuraSeeks, 0);
}

TEST_F(Seek, AwayFromCaesurasTheCallbackIsNotAsked) {
  control->AddCaesura(101);
  EXPECT_FALSE(control->Seek(100));
  EXPECT_EQ(caesuraSeeks, 0);
  EXPECT_EQ(control->GetSampleIndex(), 2400);
}

TEST_F(Seek, ASeekOntoACaesuraStopsThere) {
  control->AddCaesura(100);
  EXPECT_FALSE(control->Seek(100));
  EXPECT_EQ(caesuraSeeks, 1);
  EXPECT_EQ(TakeJournal(),
            (Journal{"base.Seek 100", "base.SetJump 100 0", "stream.Seek 100", "base.OnCaesuraStop"}));
  EXPECT_EQ(control->caesuraStops, 1) << "the virtual operation";
}

TEST_F(Seek, ACallbackThatAnswersTrueTakesTheStopOver) {
  caesuraSeek = [] { return true; };
  control->AddCaesura(100);
  EXPECT_FALSE(control->Seek(100));
  EXPECT_EQ(TakeJournal(), (Journal{"base.Seek 100", "base.SetJump 100 0", "stream.Seek 100"}));
}

TEST_F(Seek, NoLockIsHeldWhileTheCallbackIsAsked) {
  bool wereFree = false;
  caesuraSeek = [&] {
    wereFree = LocksAreFree();
    return true;
  };
  control->AddCaesura(100);
  control->Seek(100);
  EXPECT_TRUE(wereFree);
}

TEST_F(Seek, WithoutACallbackASeekOntoACaesuraIsABadFunctionCall) {
  test_support::OpenShowControl alone(activeSongNumber, showData, nullptr, converter, guiUpdate, transients,
                                      nullptr);
  fakes::planning::GetScript().song = &*song;
  alone.LoadSong();
  alone.AddCaesura(100);
  EXPECT_FALSE(alone.Seek(99));
  EXPECT_THROW(alone.Seek(100), std::bad_function_call);
}

}  // namespace
