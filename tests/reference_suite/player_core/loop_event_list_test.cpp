#include <gtest/gtest.h>

#include <stdexcept>

#include "suite/player_core/loop_event.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

LoopEvent Event(unsigned tick, unsigned char kind, bool isCanceled = false) {
  LoopEvent event;
  event.tick = tick;
  event.kind = kind;
  event.canceled = isCanceled ? 1 : 0;
  return event;
}

TEST(LoopEvent, KindsAndTheCanceledBit) {
  EXPECT_TRUE(Event(0, 64).is_vamp());
  EXPECT_FALSE(Event(0, 64).is_repeat());
  EXPECT_TRUE(Event(0, 65).is_repeat());
  EXPECT_FALSE(Event(0, 65).is_vamp());
  EXPECT_FALSE(Event(0, 66).is_vamp() || Event(0, 66).is_repeat());
  LoopEvent event;
  event.canceled = 3;
  EXPECT_TRUE(event.GetCanceled());
  event.canceled = 2;
  EXPECT_FALSE(event.GetCanceled());
}

TEST(LoopEventList, AListWithOnlyCanceledEventsHasSize0) {
  LoopEventList list;
  list.GetEvents() = {Event(10, 64, true), Event(20, 65, true)};
  EXPECT_EQ(list.GetSize(), 0U);
  EXPECT_FALSE(list.HasVampOrRepeat());
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { list.GetFirstLoopEvent(); }, "LoopEventList is empty"));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { list.GetFirstVampOrRepeat(); },
                                               "LoopEventList does not have a vamp or repeat."));
}

TEST(LoopEventList, CanceledEventsArePassedOver) {
  LoopEventList list;
  list.GetEvents() = {Event(10, 64, true), Event(20, 66), Event(30, 65), Event(40, 64)};
  EXPECT_EQ(list.GetSize(), 3U);
  EXPECT_EQ(list.GetFirstLoopEvent().tick, 20U);
  EXPECT_TRUE(list.HasVampOrRepeat());
  EXPECT_EQ(list.GetFirstVampOrRepeat().tick, 30U);
}

TEST(LoopEventList, OtherKindsAreNeitherVampNorRepeat) {
  LoopEventList list;
  list.GetEvents() = {Event(20, 66)};
  EXPECT_EQ(list.GetSize(), 1U);
  EXPECT_FALSE(list.HasVampOrRepeat());
}

TEST(LoopEventList, AnEmptyOneSaysSo) {
  LoopEventList list;
  EXPECT_EQ(list.GetSize(), 0U);
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { list.GetFirstLoopEvent(); }, "LoopEventList is empty"));
}

}  // namespace
