#include "Sources/ob_show_control/how_to_play_orbel.h"

#include <gtest/gtest.h>

#include "suite/midi/song_log.h"
#include "suite/midi/transients.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/scripted_how_to_play.h"
#include "tests/support/slot_index.h"
#include "tests/support/tempo_songs.h"

namespace {

using fakes::TakeJournal;
using test_support::SlotIndex;

class HowToPlayOrbelTest : public testing::Test {
 protected:
  HowToPlayOrbelTest() { TakeJournal(); }

  void SetAudioEnd(unsigned audioEnd) {
    stream.SetData(log,
                   test_support::SongWithTempos({{0, 500'000}}, 1000, {.midiEnd = 99, .audioEnd = audioEnd})
                       .GetTimeline(),
                   7);
  }

  Transients transients;
  CL::SongLog log;
  HowToPlayOrbel stream{transients};
};

TEST_F(HowToPlayOrbelTest, BeforeASongItEndsAt0) {
  EXPECT_EQ(stream.GetEndTickIndex(), 0u);
}

TEST_F(HowToPlayOrbelTest, ItEndsWhereTheAudioDoes) {
  SetAudioEnd(500);
  EXPECT_EQ(stream.GetEndTickIndex(), 500u);
  EXPECT_EQ(TakeJournal(), std::vector<std::string>{"stream.SetData 7"})
      << "the base takes over the same song";
}

TEST_F(HowToPlayOrbelTest, TheBaseFindsItsEndInPlace) {
  unsigned end = 0;
  fakes::how_to_play::GetScript().onSetData = [&] { end = stream.GetEndTickIndex(); };
  SetAudioEnd(500);
  EXPECT_EQ(end, 500u);
}

TEST_F(HowToPlayOrbelTest, WithoutAnAudioEndItEndsAt0AndNotWithTheMidi) {
  SetAudioEnd(500);
  SetAudioEnd(0);
  EXPECT_EQ(stream.GetEndTickIndex(), 0u);
}

TEST_F(HowToPlayOrbelTest, NobodysClockMovesIt) {
  stream.FollowClock(100, 0.5);
  EXPECT_EQ(stream.GetTickIndex(), 0u);
  EXPECT_EQ(TakeJournal(), std::vector<std::string>()) << "the base's version is not called";
}

TEST(HowToPlayOrbelSlots, StandInTheOrderOfTheContract) {
  const unsigned first = 9;  // after the lock's operations
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::GetLock), first - 1);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::AdvanceToTickIndex), first);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::FollowClock), first + 1);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::GetEndTickIndex), first + 2);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::Seek), first + 3);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::SetData), first + 4);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::SetHighSpeed), first + 5);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::LimitTempoScaleToAllowedRange), first + 6);
  EXPECT_EQ(SlotIndex(&HowToPlayOrbel::GetTickIndex), std::nullopt);
}

}  // namespace
