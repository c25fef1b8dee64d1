#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/console/cout_buffer.h"
#include "exc/lock/scope_lock.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/support/cout_capture.h"
#include "tests/support/tempo_songs.h"

namespace {

using Journal = std::vector<std::string>;

const Journal kOnce{"+SamplesTicksConverter", "-SamplesTicksConverter"};

// What this thread does with its locks during `operation`. Of a recursive lock the first level counts.
Journal LocksOf(const std::function<void()>& operation) {
  fakes::TakeJournal();
  {
    const fakes::locks::Journaling journaling;
    operation();
  }
  return fakes::TakeJournal();
}

TEST(ConverterLocks, EveryOperationHoldsTheConvertersLockThroughout) {
  SamplesTicksConverter converter;
  const auto song = test_support::SongWithTempos({{0, 500'000}, {960, 250'000}});
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"SetData", [&] { converter.SetData(song, 0); }},
      {"SetSampleRate", [&] { converter.SetSampleRate(48000.0L); }},
      {"SetSampleRate, unchanged", [&] { converter.SetSampleRate(48000.0L); }},
      {"GetAudioStart", [&] { converter.GetAudioStart(); }},
      {"TicksToSamples", [&] { converter.TicksToSamples(5); }},
      {"SamplesToTicksRounded", [&] { converter.SamplesToTicksRounded(5); }},
      {"SamplesToTicksInteger", [&] { converter.SamplesToTicksInteger(5); }},
      {"GetSamplesPerTick", [&] { converter.GetSamplesPerTick(5); }},
      {"RegisterElapsedSampleCount", [&] { converter.RegisterElapsedSampleCount(0, 0); }},
      {"GetTickIndexFromElapsedSampleCount", [&] { converter.GetTickIndexFromElapsedSampleCount(-1); }},
      {"SetElapsedSampleCountAtAudioStart", [&] { converter.SetElapsedSampleCountAtAudioStart(0); }},
      {"ResetForRecovery", [&] { converter.ResetForRecovery(0, 0); }},
      {"ResetElapsedSampleCounts", [&] { converter.ResetElapsedSampleCounts(); }},
  };
  for (const auto& [name, operation] : operations) EXPECT_EQ(LocksOf(operation), kOnce) << name;
}

TEST(ConverterLocks, TheLockIsGivenUpOnEveryError) {
  SamplesTicksConverter converter;
  EXPECT_EQ(LocksOf([&] { EXPECT_THROW(converter.SamplesToTicksRounded(0), std::logic_error); }), kOnce);
  EXPECT_EQ(LocksOf([&] { EXPECT_THROW(converter.SamplesToTicksInteger(0), std::logic_error); }), kOnce);
  EXPECT_EQ(LocksOf([&] { EXPECT_THROW(converter.GetSamplesPerTick(0), std::logic_error); }), kOnce);
  const auto song = test_support::SongWithTempos({{960, 500'000}});
  EXPECT_EQ(LocksOf([&] { EXPECT_THROW(converter.SetData(song, 480), std::logic_error); }), kOnce);
  EXPECT_EQ(LocksOf([&] { EXPECT_THROW(converter.SetSampleRate(1.0L), std::out_of_range); }), kOnce);
}

// Headings of two listings at once may mix: the heading is written before the lock is taken.
TEST(ConverterLocks, AListingHasItsHeadingWhenItTakesTheLock) {
  const test_support::CoutCapture console;
  exc::CoutBuffer out;
  class WatchedConverter : public SamplesTicksConverter {
   public:
    explicit WatchedConverter(const exc::CoutBuffer& listing) : listing_(listing) {}
    void Lock() EXC_TAKES() override {
      textAtLock = listing_.str();
      SamplesTicksConverter::Lock();
    }
    std::string textAtLock;

   private:
    const exc::CoutBuffer& listing_;
  };
  WatchedConverter converter(out);
  converter.RegisterElapsedSampleCount(5, 6);
  converter.PrintLast20(out);
  EXPECT_EQ(converter.textAtLock, "SamplesTicksConverter::PrintLast20()\n");
  EXPECT_EQ(out.str(), "SamplesTicksConverter::PrintLast20()\n    5, 6\n");
}

}  // namespace
