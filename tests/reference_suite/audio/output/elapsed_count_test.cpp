#include "reference_suite/audio/output/elapsed_count.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>

#include "tests/support/allocation_watch.h"

namespace {

using tesk_audio::ElapsedCount;

TEST(ElapsedCount, CountsFromTheRestart) {
  ElapsedCount elapsed;
  elapsed.Restart(1000);
  elapsed.Add(500, 500);
  EXPECT_EQ(elapsed.GetCount(0), 0) << "what is heard lies before the restart still";
  EXPECT_EQ(elapsed.GetCount(1000), 0);
  EXPECT_EQ(elapsed.GetCount(1001), 1);
  EXPECT_EQ(elapsed.GetCount(1500), 500);
  EXPECT_EQ(elapsed.GetCount(1600), 500) << "no more than was rendered";
  elapsed.Restart(1500);
  EXPECT_EQ(elapsed.GetCount(1500), 0);
}

TEST(ElapsedCount, NeverDecreases) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  elapsed.Add(500, 500);
  EXPECT_EQ(elapsed.GetCount(400), 400);
  EXPECT_EQ(elapsed.GetCount(300), 400);
}

TEST(ElapsedCount, WhatIsDroppedCountsAtOnce) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  elapsed.Add(700, 700);
  EXPECT_EQ(elapsed.GetCount(100), 100);
  elapsed.CountAll();
  EXPECT_EQ(elapsed.GetCount(100), 700);
  elapsed.Add(300, 300);
  EXPECT_EQ(elapsed.GetCount(700), 700);
  EXPECT_EQ(elapsed.GetCount(750), 750);
}

TEST(ElapsedCount, StretchedBlocksAreMappedInProportionAndNeverAhead) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  elapsed.Add(100, 100);
  elapsed.Add(300, 200);  // slower than recorded
  elapsed.Add(100, 250);  // faster
  elapsed.Add(100, 100);
  EXPECT_EQ(elapsed.GetCount(100), 100);
  EXPECT_EQ(elapsed.GetCount(101), 100) << "two thirds of a frame are no frame yet";
  EXPECT_EQ(elapsed.GetCount(102), 101);
  EXPECT_EQ(elapsed.GetCount(103), 102);
  EXPECT_EQ(elapsed.GetCount(400), 300);
  EXPECT_EQ(elapsed.GetCount(401), 302);
  EXPECT_EQ(elapsed.GetCount(500), 550);
  EXPECT_EQ(elapsed.GetCount(600), 650);
}

TEST(ElapsedCount, AReadTooShortForADeviceFrameIsHeardWithTheNextOne) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  elapsed.Add(100, 100);
  elapsed.Add(0, 1);
  elapsed.Add(100, 100);
  EXPECT_EQ(elapsed.GetCount(100), 101) << "what follows begins there";
  EXPECT_EQ(elapsed.GetCount(150), 151);
  EXPECT_EQ(elapsed.GetCount(200), 201);
}

TEST(ElapsedCount, RemembersAsManyBlocksAsItIsToldTo) {
  ElapsedCount elapsed(2000);
  elapsed.Restart(0);
  for (int i = 0; i < 2000; ++i) elapsed.Add(10, 40);
  EXPECT_EQ(elapsed.GetCount(10), 40) << "the oldest is still known";
}

TEST(ElapsedCount, KeepsTheNewestOfVeryManyBlocks) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  for (int i = 0; i < 10'000; ++i) elapsed.Add(10, 11);
  EXPECT_EQ(elapsed.GetCount(99'990), 109'989);
  EXPECT_EQ(elapsed.GetCount(100'000), 110'000);
}

TEST(ElapsedCount, ASongOfManyHoursCountsExactly) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  for (int i = 0; i < 5; ++i) elapsed.Add(4'000'000'000, 4'000'000'000);
  EXPECT_EQ(elapsed.GetCount(19'999'999'999), 19'999'999'999);
}

TEST(ElapsedCount, AllocatesNothing) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  const test_support::AllocationWatch watch;
  for (int i = 0; i < 1000; ++i) {
    elapsed.Add(10, 10 + i % 2);
    elapsed.GetCount(static_cast<std::uint64_t>(i) * 10);
  }
  EXPECT_EQ(watch.Count(), 0);
}

TEST(ElapsedCount, ReadsFromAnotherThreadNeverDecrease) {
  ElapsedCount elapsed;
  elapsed.Restart(0);
  std::atomic<bool> ends{false};
  std::atomic<std::uint64_t> audible{0};
  bool isRight = true;
  std::thread reader([&] {
    long long last = 0;
    while (!ends) {
      const long long count = elapsed.GetCount(audible);
      isRight = isRight && count >= last;
      last = count;
    }
  });
  for (std::uint64_t i = 0; i < 50'000; ++i) {
    elapsed.Add(10, 10);
    audible = i * 10;
    if (i % 1000 == 0) elapsed.CountAll();
  }
  ends = true;
  reader.join();
  EXPECT_TRUE(isRight);
}

}  // namespace
