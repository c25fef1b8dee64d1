#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <thread>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "tests/support/tempo_songs.h"
#include "tests/support/throws_with_text.h"

// The map is seen through the conversions: an entry's samples are those of its tick, its tick time is the
// length of the ticks after it.

namespace {

using test_support::ThrowsWithText;

using test_support::SongWithTempos;

constexpr char kNoTempoAtZero[] = "this->tempoEvents_ does not contain events at tick time 0.";

TEST(TempoMap, StartsEmptyAtTick0) {
  SamplesTicksConverter converter;
  EXPECT_EQ(converter.GetAudioStart(), 0u);
  EXPECT_EQ(converter.TicksToSamples(1000), 0);
}

TEST(TempoMap, OneTempoAtTick0GivesOneEntryWithoutSamples) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}), 0);
  EXPECT_EQ(converter.GetAudioStart(), 0u);
  EXPECT_EQ(converter.TicksToSamples(0), 0);
  EXPECT_EQ(converter.GetSamplesPerTick(0), static_cast<double>(0.0005 * 44100.0L));
  EXPECT_EQ(converter.GetSamplesPerTick(1'000'000), static_cast<double>(0.0005 * 44100.0L));
}

TEST(TempoMap, TheSecondTempoOfTicks0And960BeginsAtSample21168) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {960, 250'000}}), 0);
  EXPECT_EQ(converter.TicksToSamples(960), 21168);
  EXPECT_EQ(converter.GetSamplesPerTick(21167), static_cast<double>(0.0005 * 44100.0L));
  EXPECT_EQ(converter.GetSamplesPerTick(21168), static_cast<double>(0.00025 * 44100.0L));
}

TEST(TempoMap, AnAudioStartBetweenTwoTemposTakesTheTempoBeforeIt) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {960, 250'000}}), 480);
  EXPECT_EQ(converter.GetAudioStart(), 480u);
  EXPECT_EQ(converter.TicksToSamples(480), 0);
  EXPECT_EQ(converter.TicksToSamples(481), 22);
  EXPECT_EQ(converter.TicksToSamples(960), 10584);
  EXPECT_EQ(converter.TicksToSamples(961), 10584 + 11);
  EXPECT_EQ(converter.TicksToSamples(0), 0);
}

TEST(TempoMap, AnAudioStartOnATempoTakesThatTempo) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {960, 250'000}}), 960);
  EXPECT_EQ(converter.TicksToSamples(960), 0);
  EXPECT_EQ(converter.TicksToSamples(961), 11);
  EXPECT_EQ(converter.GetSamplesPerTick(0), static_cast<double>(0.00025 * 44100.0L));
}

TEST(TempoMap, AnAudioStartAfterTheLastTempoTakesIt) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 250'000}, {960, 500'000}}), 2000);
  EXPECT_EQ(converter.TicksToSamples(2000), 0);
  EXPECT_EQ(converter.TicksToSamples(2001), 22);
}

TEST(TempoMap, NoTempoAtTick0IsAnError) {
  SamplesTicksConverter converter;
  EXPECT_TRUE(ThrowsWithText<std::logic_error>(
      [&] {
        converter.SetData(SongWithTempos({{960, 500'000}}), 480);
      },
      kNoTempoAtZero));
  // The new audio start stays, and the entries that were filled in, without samples.
  EXPECT_EQ(converter.GetAudioStart(), 480u);
  EXPECT_EQ(converter.TicksToSamples(959), 0);
  EXPECT_EQ(converter.TicksToSamples(960), 0);
  EXPECT_EQ(converter.TicksToSamples(961), 22);
}

TEST(TempoMap, NoTempoAtAllIsAnError) {
  SamplesTicksConverter converter;
  EXPECT_TRUE(
      ThrowsWithText<std::logic_error>([&] { converter.SetData(SongWithTempos({}), 0); }, kNoTempoAtZero));
}

TEST(TempoMap, OfTwoTemposAtOneTickTheLaterInTheSequenceWins) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 250'000}, {0, 500'000}, {960, 500'000}, {960, 250'000}}), 0);
  EXPECT_EQ(converter.TicksToSamples(960), 21168);
  EXPECT_EQ(converter.TicksToSamples(961), 21168 + 11);
}

TEST(TempoMap, ANewSongReplacesTheMap) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {960, 250'000}}), 480);
  converter.SetData(SongWithTempos({{0, 250'000}}), 0);
  EXPECT_EQ(converter.GetAudioStart(), 0u);
  EXPECT_EQ(converter.TicksToSamples(1), 11);
  EXPECT_EQ(converter.TicksToSamples(960), 10584);
}

TEST(TempoMap, ThePpqOfTheSongDecidesHowLongATickIs) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}, 480), 0);
  EXPECT_EQ(converter.TicksToSamples(480), 22050);
  converter.SetData(SongWithTempos({{0, 500'000}}, 960), 0);
  EXPECT_EQ(converter.TicksToSamples(960), 22050);
}

TEST(TempoMap, EachSegmentIsRoundedOnItsOwn) {
  SamplesTicksConverter converter;
  // One tick of 22.05 samples, then two of 22.05: 22 + 44, where 66.15 from the start would be the same, and
  // at eleven segments of one tick 11 * 22 = 242 where 242.55 would be 243.
  std::vector<test_support::TempoAt> tempos;
  for (unsigned tick = 0; tick <= 11; ++tick) tempos.push_back({tick, 500'000});
  converter.SetData(SongWithTempos(tempos), 0);
  EXPECT_EQ(converter.TicksToSamples(11), 242);
  converter.SetData(SongWithTempos({{0, 500'000}}), 0);
  EXPECT_EQ(converter.TicksToSamples(11), 243);
}

TEST(TempoMap, AHalfSampleIsRoundedAwayFromZeroInEverySegment) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {10, 500'000}, {20, 500'000}}), 0);
  EXPECT_EQ(converter.TicksToSamples(10), 221);
  EXPECT_EQ(converter.TicksToSamples(20), 442);
}

TEST(TempoMap, AnotherSampleRateRecomputesEveryCountFromTheAudioStart) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {960, 250'000}, {1960, 500'000}}), 480);
  converter.SetSampleRate(48000.0L);
  EXPECT_EQ(converter.TicksToSamples(0), 0);
  EXPECT_EQ(converter.TicksToSamples(480), 0);
  EXPECT_EQ(converter.TicksToSamples(960), 480 * 24);
  EXPECT_EQ(converter.TicksToSamples(1960), 480 * 24 + 1000 * 12);
  EXPECT_EQ(converter.TicksToSamples(1961), 480 * 24 + 1000 * 12 + 24);
}

// That nothing is rebuilt shows where a rebuild would: on a map that has been left without its entry at the
// audio start.
TEST(TempoMap, TheStoredSampleRateDoesNotRecompute) {
  SamplesTicksConverter converter;
  EXPECT_THROW(converter.SetData(SongWithTempos({{960, 500'000}}), 480), std::logic_error);
  EXPECT_NO_THROW(converter.SetSampleRate(44100.0L));
  EXPECT_THROW(converter.SetSampleRate(48000.0L), std::out_of_range);
  EXPECT_NO_THROW(converter.SetSampleRate(48000.0L)) << "the rate is stored although the rebuild failed";
}

TEST(TempoMap, TheSmallestChangeOfALongDoubleIsAChange) {
  SamplesTicksConverter converter;
  EXPECT_THROW(converter.SetData(SongWithTempos({{960, 500'000}}), 480), std::logic_error);
  EXPECT_THROW(converter.SetSampleRate(std::nextafter(44100.0L, 50000.0L)), std::out_of_range);
}

TEST(TempoMap, ANanSampleRateAlwaysCountsAsAChange) {
  const long double nan = std::numeric_limits<long double>::quiet_NaN();
  SamplesTicksConverter converter;
  EXPECT_THROW(converter.SetData(SongWithTempos({{960, 500'000}}), 480), std::logic_error);
  EXPECT_THROW(converter.SetSampleRate(nan), std::out_of_range);
  EXPECT_THROW(converter.SetSampleRate(nan), std::out_of_range);
  EXPECT_THROW(converter.SetSampleRate(44100.0L), std::out_of_range);
}

TEST(TempoMap, ASampleRateBeforeAnySongLeavesOneEntryWithTheDefaults) {
  SamplesTicksConverter converter;
  converter.SetSampleRate(48000.0L);
  EXPECT_EQ(converter.TicksToSamples(1), 48);
  EXPECT_EQ(converter.GetSamplesPerTick(0), 48.0);
}

TEST(TempoMap, NoEntryAtTick0WithALaterAudioStartIsOutOfRange) {
  SamplesTicksConverter converter;
  EXPECT_THROW(converter.SetData(SongWithTempos({}), 480), std::logic_error);
  EXPECT_THROW(converter.SetSampleRate(48000.0L), std::out_of_range);
  // The entry of the audio start has been inserted, with the defaults.
  EXPECT_EQ(converter.TicksToSamples(481), 48);
}

TEST(TempoMap, TheLockIsFreeAfterAnError) {
  SamplesTicksConverter converter;
  EXPECT_THROW(converter.SetData(SongWithTempos({}), 480), std::logic_error);
  EXPECT_THROW(converter.SetSampleRate(48000.0L), std::out_of_range);
  EXPECT_THROW(converter.SamplesToTicksInteger(-1), std::logic_error);
  bool isFree = false;
  std::thread other([&] {
    if (!converter.TryLock()) return;
    isFree = true;
    converter.Unlock();
  });
  other.join();
  EXPECT_TRUE(isFree);
}

// Rates and tempos that no song has are no reason for undefined arithmetic: what is not a number of samples
// counts as none, and conversions to ticks fail in their checks.
TEST(TempoMap, ASampleRateThatIsNotANumberGivesNoSamples) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {960, 250'000}, {1960, 500'000}}), 0);
  converter.SetSampleRate(std::numeric_limits<long double>::quiet_NaN());
  EXPECT_EQ(converter.TicksToSamples(5000), 0);
  converter.SetSampleRate(std::numeric_limits<long double>::infinity());
  EXPECT_EQ(converter.TicksToSamples(5000), 0);
  converter.SetSampleRate(1e30L);
  EXPECT_EQ(converter.TicksToSamples(5000), 0);
}

TEST(TempoMap, CountsPast63BitsWrap) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 1'000'000}, {1000, 1'000'000}, {2000, 1'000'000}}), 0);
  converter.SetSampleRate(9e18L);
  EXPECT_EQ(converter.TicksToSamples(2000), static_cast<long long>(18'000'000'000'000'000'000ULL));
}

}  // namespace
