#include "host/session/vamp_leaver.h"

#include <gtest/gtest.h>

#include "suite/core/event_codes.h"
#include "suite/midi/song_log.h"
#include "suite/midi/timeline.h"
#include "suite/player_core/jump.h"

namespace orbel::host {
namespace {

// A vamp over bars 3 and 4 of a song in 4/4 at 480 ticks to the quarter note.
constexpr TickIndex kBar = 1920;
constexpr TickIndex kFrom = 2 * kBar;
constexpr TickIndex kTo = 4 * kBar;
const Jump kVampNext{kTo, kFrom, codes::kVamp};

class Vamp : public testing::Test {
 protected:
  Vamp() {
    cmn::SequenceTemplate<TL::BarsBeats> bars;
    for (int bar = 0; bar < 8; ++bar)
      bars.Add(TL::BarsBeats(static_cast<unsigned>(bar) * kBar, bar + 1, 4, 480));
    timeline_.SetBarsBeats(bars);
    timeline_.SetMidiEndTicks(8 * kBar);
    cmn::SequenceTemplate<TL::Meter> meters;
    meters.Add(TL::Meter(0, 4, 4));
    timeline_.SetMeters(meters);
    AddLoop(kFrom, kTo, codes::kVamp, CL::VampExit::EndOfPass);
  }
  void AddLoop(TickIndex from, TickIndex to, int code, CL::VampExit exit) {
    log_.loops.Add(CL::Loop(from, to, code, 0, exit, 1));
  }
  bool ShouldSayGo(const VampLeaver& leaver, const Jump& next, TickIndex position) {
    return leaver.ShouldSayGo(next, position, log_, timeline_);
  }

  CL::SongLog log_;
  TL::Timeline timeline_;
};

TEST_F(Vamp, IsLeftInItsFirstPassWhenItIsPlayedOnce) {
  VampLeaver leaver(1);
  EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kFrom - 1)) << "still ahead";
  EXPECT_TRUE(ShouldSayGo(leaver, kVampNext, kFrom));
  EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kTo)) << "too late for this pass";
}

TEST_F(Vamp, IsLeftInTheLastOfItsPasses) {
  VampLeaver leaver(3);
  for (int pass = 1; pass <= 2; ++pass) {
    EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kFrom + 1)) << "pass " << pass;
    leaver.OnJump(kTo, kFrom, log_);
  }
  EXPECT_TRUE(ShouldSayGo(leaver, kVampNext, kFrom + 1));
}

TEST_F(Vamp, OtherJumpsAreNoneOfItsBusiness) {
  VampLeaver leaver(1);
  EXPECT_FALSE(ShouldSayGo(leaver, {kTo, kFrom, codes::kRepeat}, kFrom));
  EXPECT_FALSE(ShouldSayGo(leaver, {kFrom, kTo, codes::kCut}, kFrom));
}

TEST_F(Vamp, IsCountedAnewWhenALoopAroundItBeginsAgain) {
  VampLeaver leaver(2);
  leaver.OnJump(kTo, kFrom, log_);
  EXPECT_TRUE(ShouldSayGo(leaver, kVampNext, kFrom));
  leaver.OnJump(6 * kBar, kBar, log_);
  EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kFrom));
}

TEST_F(Vamp, IsCountedAnewInAnotherSong) {
  VampLeaver leaver(2);
  leaver.OnJump(kTo, kFrom, log_);
  leaver.OnSong();
  EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kFrom));
}

TEST_F(Vamp, ThatGoLeavesAtABarIsLeftInItsLastBarOnly) {
  log_.loops = {};
  AddLoop(kFrom, kTo, codes::kVamp, CL::VampExit::NextBar);
  VampLeaver leaver(1);
  EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kFrom + 1));
  EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kTo - kBar)) << "go here would leave at this very line";
  EXPECT_TRUE(ShouldSayGo(leaver, kVampNext, kTo - kBar + 1));
}

TEST_F(Vamp, ThatGoLeavesAtABeatIsLeftInItsLastBeatOnly) {
  log_.loops = {};
  AddLoop(kFrom, kTo, codes::kVamp, CL::VampExit::NextBeat);
  VampLeaver leaver(1);
  EXPECT_FALSE(ShouldSayGo(leaver, kVampNext, kTo - 480));
  EXPECT_TRUE(ShouldSayGo(leaver, kVampNext, kTo - 479));
}

TEST_F(Vamp, ThatGoDoesNotLeaveIsNoticed) {
  VampLeaver leaver(1);
  leaver.OnJump(kTo, kFrom, log_);
  leaver.OnJump(kTo, kFrom, log_);
  EXPECT_FALSE(leaver.IsStuck());
  leaver.OnJump(kTo, kFrom, log_);
  EXPECT_TRUE(leaver.IsStuck());
}

TEST_F(Vamp, ARepeatOfManyPassesIsNotStuck) {
  log_.loops = {};
  AddLoop(kFrom, kTo, codes::kRepeat, CL::VampExit::EndOfPass);
  VampLeaver leaver(1);
  for (int pass = 0; pass < 20; ++pass) leaver.OnJump(kTo, kFrom, log_);
  EXPECT_FALSE(leaver.IsStuck());
}

}  // namespace
}  // namespace orbel::host
