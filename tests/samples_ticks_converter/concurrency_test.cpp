#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/scope_lock.h"
#include "tests/support/slot_index.h"
#include "tests/support/tempo_songs.h"

namespace {

using test_support::SlotIndex;
using test_support::SongWithTempos;

// A rate of 44,100 or 48,000: which of the two is open, but a pair of conversions under the lock sees one.
TEST(ConverterThreads, UnderTheLockTwoConversionsSeeTheSameMap) {
  SamplesTicksConverter converter;
  const auto song = SongWithTempos({{0, 500'000}, {960, 250'000}});
  converter.SetData(song, 0);
  std::atomic<bool> stop{false};
  std::thread host([&] {
    for (int i = 0; i < 400; ++i) {
      converter.SetSampleRate(i % 2 == 0 ? 48000.0L : 44100.0L);
      converter.SetData(song, i % 3 == 0 ? 480 : 0);
    }
    stop = true;
  });
  int pairs = 0;
  do {
    exc::ScopeLock lock(converter);
    const unsigned tick = converter.GetAudioStart() + 1000;
    unsigned extra = ~0u;
    ASSERT_EQ(converter.SamplesToTicksInteger(converter.TicksToSamples(tick), &extra), tick);
    ASSERT_EQ(extra, 0u);
    ++pairs;
  } while (!stop);
  host.join();
  EXPECT_GT(pairs, 0);
}

TEST(ConverterThreads, RegistrationsQueriesAndResetsOfSeveralThreadsAreSerialised) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}), 0);
  converter.RegisterElapsedSampleCount(0, 0);
  std::atomic<bool> stop{false};
  std::thread render([&] {
    for (int i = 1; i <= 2000; ++i) converter.RegisterElapsedSampleCount(i * 22, static_cast<unsigned>(i));
    stop = true;
  });
  std::thread recovery([&] {
    while (!stop) converter.ResetForRecovery(0, 0);
  });
  while (!stop) ASSERT_LE(converter.GetTickIndexFromElapsedSampleCount(2000 * 22), 2001u);
  render.join();
  recovery.join();
}

TEST(ConverterSlots, TheLockOperationsComeFirstAndNothingIsAdded) {
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::Lock), 0u);
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::Unlock), 1u);
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::TryLock), 2u);
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::get_mutex), 5u) << "after the two slots of the destructor";
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::GetLock), 8u);
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::SetData), std::nullopt);
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::SetSampleRate), std::nullopt);
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::SamplesToTicksInteger), std::nullopt);
  EXPECT_EQ(SlotIndex(&SamplesTicksConverter::PrintLast20), std::nullopt);
}

}  // namespace
