// What the device hears, period by period, turned by hand.
#include "reference_suite/audio/output/device_feed.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/allocation_watch.h"

namespace {

using Frames = std::vector<float>;

class Feed : public testing::Test {
 protected:
  // Frames n, n + 1, ... , the first ever being 1.
  void Write(std::size_t count) {
    Frames frames(count);
    for (float& frame : frames) frame = static_cast<float>(++written_);
    ring_.Write(frames.data(), count);
  }

  Frames Turn(std::size_t count, tesk_audio::DeviceFeed* feed) {
    Frames frames(count, -1.0F);
    feed->Process(frames.data(), count);
    return frames;
  }
  Frames Turn(std::size_t count) { return Turn(count, &feed_); }

  static Frames From(int first, std::size_t count) {
    Frames frames(count);
    for (float& frame : frames) frame = static_cast<float>(first++);
    return frames;
  }
  static Frames Silence(std::size_t count) { return Frames(count, 0.0F); }

  static Frames Joined(Frames a, const Frames& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  }

  int written_ = 0;
  tesk_audio::FrameRing ring_{64, 1};
  tesk_audio::DeviceFeed feed_{ring_, 1, 0};   // without fades
  tesk_audio::DeviceFeed faded_{ring_, 1, 4};  // the other one must not be turned then
};

TEST_F(Feed, ClosedItIsSilentAndTakesNothing) {
  Write(10);
  EXPECT_TRUE(feed_.IsClosed());
  EXPECT_EQ(Turn(8), Silence(8));
  EXPECT_EQ(ring_.GetAvailable(), 10U);
  EXPECT_EQ(feed_.GetUnderrunFrames(), 0);
}

TEST_F(Feed, OpenItHandsOutWhatIsThere) {
  Write(10);
  feed_.Open();
  EXPECT_FALSE(feed_.IsClosed());
  EXPECT_EQ(Turn(4), From(1, 4));
  EXPECT_EQ(Turn(6), From(5, 6));
  EXPECT_EQ(feed_.GetAudiblePosition(), 10U);
}

TEST_F(Feed, AShortRingYieldsSilenceForTheMissingFramesOnly) {
  Write(3);
  feed_.Open();
  EXPECT_EQ(Turn(8), Joined(From(1, 3), Silence(5)));
  EXPECT_EQ(feed_.GetUnderrunFrames(), 5);
  Write(3);
  EXPECT_EQ(Turn(3), From(4, 3));
  EXPECT_EQ(feed_.GetUnderrunFrames(), 5);
}

TEST_F(Feed, ClosingStopsAtOnceWithoutAFadeAndKeepsTheRest) {
  Write(10);
  feed_.Open();
  Turn(4);
  feed_.Close(0);
  EXPECT_FALSE(feed_.IsClosed()) << "the device has not obeyed yet";
  EXPECT_EQ(Turn(4), Silence(4));
  EXPECT_TRUE(feed_.IsClosed());
  feed_.Open();
  EXPECT_EQ(Turn(4), From(5, 4)) << "goes on with the frame after the last one heard";
}

TEST_F(Feed, ClosingFadesOutOverTheNextFrames) {
  Write(20);
  feed_.SetRefill(0);
  feed_.Open();
  Turn(4);
  feed_.Close(4);
  EXPECT_EQ(Turn(6), (Frames{5 * 0.75F, 6 * 0.5F, 7 * 0.25F, 0, 0, 0}));
  EXPECT_TRUE(feed_.IsClosed());
  EXPECT_EQ(ring_.GetReadPosition(), 8U);
}

TEST_F(Feed, AFadeLongerThanWhatIsThereEndsWithTheLastFrame) {
  Write(8);
  feed_.SetRefill(0);
  feed_.Open();
  Turn(4);
  feed_.Close(1000);
  EXPECT_EQ(Turn(2), (Frames{5 * 0.75F, 6 * 0.5F}));
  EXPECT_EQ(Turn(4), (Frames{7 * 0.25F, 0, 0, 0}));
  EXPECT_TRUE(feed_.IsClosed());
  EXPECT_EQ(feed_.GetUnderrunFrames(), 0);
}

TEST_F(Feed, AFadeLongerThanWhatIsLeftBeforeTheEndEndsThere) {
  Write(20);
  feed_.SetRefill(0);
  feed_.EndAt(8);
  feed_.Open();
  Turn(4);
  feed_.Close(1000);
  EXPECT_EQ(Turn(6), (Frames{5 * 0.75F, 6 * 0.5F, 7 * 0.25F, 0, 0, 0}));
  EXPECT_TRUE(feed_.IsClosed());
}

TEST_F(Feed, AFadeGoesOnOverPeriods) {
  Write(20);
  feed_.SetRefill(0);
  feed_.Open();
  Turn(4);
  feed_.Close(8);
  EXPECT_EQ(Turn(4), (Frames{5 * 0.875F, 6 * 0.75F, 7 * 0.625F, 8 * 0.5F}));
  EXPECT_FALSE(feed_.IsClosed());
  EXPECT_EQ(Turn(4), (Frames{9 * 0.375F, 10 * 0.25F, 11 * 0.125F, 0}));
  EXPECT_TRUE(feed_.IsClosed());
}

TEST_F(Feed, OpeningFadesInButNotAtTheFirstFrameOfARefill) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  EXPECT_EQ(Turn(4, &faded_), From(1, 4));
  faded_.Close(0);
  Turn(1, &faded_);
  faded_.Open();
  EXPECT_EQ(Turn(6, &faded_), (Frames{5 * 0.25F, 6 * 0.5F, 7 * 0.75F, 8, 9, 10}));
}

TEST_F(Feed, OpenedInTheMiddleOfAFadeOutItTurnsRound) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(2, &faded_);
  faded_.Close(4);
  EXPECT_EQ(Turn(2, &faded_), (Frames{3 * 0.75F, 4 * 0.5F}));
  faded_.Open();
  EXPECT_EQ(Turn(4, &faded_), (Frames{5 * 0.75F, 6, 7, 8}));
  EXPECT_FALSE(faded_.IsClosed());
}

TEST_F(Feed, ClosedAndOpenedBetweenTwoPeriodsNothingHappened) {
  Write(20);
  feed_.Open();
  Turn(4);
  feed_.Close(0);
  feed_.Open();
  EXPECT_FALSE(feed_.IsClosed());
  EXPECT_EQ(Turn(4), From(5, 4));
}

TEST_F(Feed, OpenedAndClosedBetweenTwoPeriodsItIsClosedOnceTheDeviceHasLooked) {
  Write(20);
  feed_.Open();
  feed_.Close(0);
  EXPECT_FALSE(feed_.IsClosed());
  EXPECT_EQ(Turn(4), Silence(4));
  EXPECT_TRUE(feed_.IsClosed());
}

TEST_F(Feed, AtTheEndItClosesByItselfWithoutAFadeAndWithoutAnUnderrun) {
  Write(6);
  faded_.SetRefill(0);
  faded_.EndAt(6);
  faded_.Open();
  EXPECT_EQ(Turn(8, &faded_), Joined(From(1, 6), Silence(2)));
  EXPECT_TRUE(faded_.IsClosed());
  EXPECT_EQ(faded_.GetUnderrunFrames(), 0);
}

TEST_F(Feed, ItNeverRunsOverTheEnd) {
  Write(10);
  feed_.EndAt(6);
  feed_.Open();
  EXPECT_EQ(Turn(8), Joined(From(1, 6), Silence(2)));
  feed_.ClearEnd();
  feed_.Open();
  EXPECT_EQ(Turn(4), From(7, 4));
}

TEST_F(Feed, OpenedAtTheEndItClosesAgain) {
  feed_.EndAt(0);
  feed_.Open();
  EXPECT_EQ(Turn(4), Silence(4));
  EXPECT_TRUE(feed_.IsClosed());
}

TEST_F(Feed, ClosedItPassesOverWhatIsDroppedAtOnce) {
  Write(10);
  feed_.DropBefore(10);
  Write(4);
  Turn(1);
  EXPECT_EQ(ring_.GetReadPosition(), 10U);
  feed_.Open();
  EXPECT_EQ(Turn(4), From(11, 4));
}

TEST_F(Feed, DroppedAndOpenedBetweenTwoPeriodsARefillIsNotFadedIn) {
  Write(10);
  faded_.SetRefill(10);
  faded_.DropBefore(10);
  Write(4);
  faded_.Open();
  EXPECT_EQ(Turn(4, &faded_), From(11, 4));
}

TEST_F(Feed, PlayingItFadesOutWhatIsDroppedUnderWhatComesInstead) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(4, &faded_);
  faded_.DropBefore(20);
  Write(20);
  EXPECT_EQ(Turn(6, &faded_),
            (Frames{5 * 0.75F + 21 * 0.25F, 6 * 0.5F + 22 * 0.5F, 7 * 0.25F + 23 * 0.75F,  //
                    24, 25, 26}));
}

TEST_F(Feed, AFadeOutOfWhatIsDroppedGoesOnOverPeriods) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(4, &faded_);
  faded_.DropBefore(20);
  Write(20);
  EXPECT_EQ(Turn(2, &faded_), (Frames{5 * 0.75F + 21 * 0.25F, 6 * 0.5F + 22 * 0.5F}));
  EXPECT_EQ(Turn(2, &faded_), (Frames{7 * 0.25F + 23 * 0.75F, 24}));
}

TEST_F(Feed, DroppedAgainMeanwhileBothFadeOut) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(4, &faded_);
  faded_.DropBefore(20);
  Write(4);
  Turn(2, &faded_);
  faded_.DropBefore(24);
  Write(10);
  // What came instead had got to half of its level.
  EXPECT_EQ(Turn(4, &faded_), (Frames{7 * 0.25F + 23 * 0.25F + 25 * 0.25F, 26 * 0.5F, 27 * 0.75F, 28}));
}

TEST_F(Feed, WhileNothingComesInsteadWhatIsDroppedGoesOn) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(4, &faded_);
  faded_.DropBefore(20);
  EXPECT_EQ(Turn(4, &faded_), From(5, 4));
  EXPECT_EQ(Turn(8, &faded_), From(9, 8)) << "four are left, a whole fade";
  EXPECT_EQ(Turn(6, &faded_), (Frames{17 * 0.75F, 18 * 0.5F, 19 * 0.25F, 0, 0, 0}));
  EXPECT_EQ(faded_.GetUnderrunFrames(), 6);
}

TEST_F(Feed, WithoutFadesADropIsASplice) {
  Write(20);
  feed_.Open();
  Turn(4);
  feed_.DropBefore(20);
  Write(20);
  EXPECT_EQ(Turn(4), From(21, 4));
}

TEST_F(Feed, AFadeOutOfWhatIsDroppedEndsWithItAndTakesNothingOfWhatComesInstead) {
  Write(6);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(4, &faded_);
  faded_.DropBefore(6);
  Write(10);
  EXPECT_EQ(Turn(4, &faded_), (Frames{5 * 0.5F + 7 * 0.25F, 8 * 0.5F, 9 * 0.75F, 10}));
}

TEST_F(Feed, ClosedWhileItDropsItIsClosedWhenWhatWasDroppedHasFadedOut) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(4, &faded_);
  faded_.DropBefore(20);
  Write(1);
  Turn(2, &faded_);
  faded_.Close(4);
  EXPECT_EQ(Turn(1, &faded_), Frames{7 * 0.25F});
  EXPECT_FALSE(faded_.IsClosed());
  EXPECT_EQ(Turn(1, &faded_), Frames{0});
  EXPECT_TRUE(faded_.IsClosed());
  EXPECT_EQ(ring_.GetReadPosition(), 21U);
}

TEST_F(Feed, DroppedWhileItClosesItPassesOverTheRestAndStaysClosed) {
  Write(20);
  faded_.SetRefill(0);
  faded_.Open();
  Turn(4, &faded_);
  faded_.Close(4);
  Turn(2, &faded_);
  faded_.DropBefore(20);
  Write(10);
  EXPECT_EQ(Turn(4, &faded_), (Frames{7 * 0.25F, 0, 0, 0}));
  EXPECT_TRUE(faded_.IsClosed());
  EXPECT_EQ(ring_.GetReadPosition(), 20U);
}

TEST_F(Feed, AFadeOutEndsEvenWhenTheRingIsEmpty) {
  Write(4);
  feed_.Open();
  Turn(4);
  feed_.Close(8);
  EXPECT_EQ(Turn(8), Silence(8));
  EXPECT_TRUE(feed_.IsClosed());
}

TEST_F(Feed, WhatIsAudibleIsBehindByTheLatency) {
  Write(30);
  feed_.SetLatency(10);
  feed_.Open();
  Turn(4);
  EXPECT_EQ(feed_.GetAudiblePosition(), 0U);
  Turn(16);
  EXPECT_EQ(feed_.GetAudiblePosition(), 10U);
}

TEST_F(Feed, SilencePushesTheLastFramesToTheLoudspeaker) {
  Write(20);
  feed_.SetLatency(10);
  feed_.EndAt(20);
  feed_.Open();
  Turn(20);
  EXPECT_EQ(feed_.GetAudiblePosition(), 10U);
  Turn(4);
  EXPECT_EQ(feed_.GetAudiblePosition(), 14U);
  Turn(8);
  EXPECT_EQ(feed_.GetAudiblePosition(), 20U);
}

TEST_F(Feed, WhatIsAudibleNeverGoesBack) {
  Write(40);
  feed_.SetLatency(4);
  feed_.Open();
  Turn(20);
  EXPECT_EQ(feed_.GetAudiblePosition(), 16U);
  feed_.SetLatency(12);
  Turn(2);
  EXPECT_EQ(feed_.GetAudiblePosition(), 16U);
  Turn(8);
  EXPECT_EQ(feed_.GetAudiblePosition(), 18U);
}

TEST_F(Feed, WhatADeviceHadTakenAndNotPlayedIsHeardWhenItIsTakenBack) {
  tesk_audio::FrameRing ring(64, 1, 16);
  tesk_audio::DeviceFeed feed(ring, 1, 0);
  const Frames frames = From(1, 40);
  ring.Write(frames.data(), 40);
  feed.SetLatency(10);
  feed.Open();
  EXPECT_EQ(Turn(20, &feed), From(1, 20));
  feed.TakeBackUnheard();
  feed.Close(0);
  EXPECT_EQ(Turn(100, &feed), Silence(100));
  EXPECT_EQ(feed.GetAudiblePosition(), 10U) << "nothing more was heard";
  feed.SetLatency(0);
  feed.Open();
  EXPECT_EQ(Turn(15, &feed), From(11, 15));
  EXPECT_EQ(feed.GetAudiblePosition(), 25U);
}

TEST_F(Feed, WhatWasHeardBehindAPauseIsNotTakenBack) {
  tesk_audio::FrameRing ring(64, 1, 16);
  tesk_audio::DeviceFeed feed(ring, 1, 0);
  const Frames frames = From(1, 40);
  ring.Write(frames.data(), 40);
  feed.SetLatency(10);
  feed.Open();
  Turn(20, &feed);
  feed.Close(0);
  Turn(4, &feed);
  feed.TakeBackUnheard();
  feed.Open();
  EXPECT_EQ(Turn(4, &feed), From(15, 4)) << "six frames were still on their way";
}

TEST_F(Feed, TheCallbackAllocatesNothing) {
  Frames frames(16);
  const test_support::AllocationWatch watch;
  for (int i = 0; i < 200; ++i) {
    if (i % 7 == 0) faded_.Open();
    if (i % 11 == 0) faded_.Close(4);
    if (i % 13 == 0) faded_.DropBefore(ring_.GetWritePosition());
    if (ring_.GetFree() >= 16) ring_.Write(frames.data(), 16);
    faded_.Process(frames.data(), 16);
  }
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
