#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <ostream>
#include <stdexcept>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/assertion/ex_assertion_error.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/tempo_songs.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

using test_support::SongWithTempos;

constexpr char kBeforeTheMap[] = "found this->tempoEvents_.begin()";

// 44,100 frames per second and 0.0005 seconds per tick: 22.05 samples, so that nearly every boundary is
// rounded.
class OneTempo : public testing::Test {
 protected:
  OneTempo() { converter.SetData(SongWithTempos({{0, 500'000}}), 0); }

  SamplesTicksConverter converter;
};

// ---- ticks to samples ------------------------------------------------------------------------------

TEST_F(OneTempo, TicksBeginOnRoundedSamples) {
  EXPECT_EQ(converter.TicksToSamples(0), 0);
  EXPECT_EQ(converter.TicksToSamples(1), 22);
  EXPECT_EQ(converter.TicksToSamples(2), 44);
  EXPECT_EQ(converter.TicksToSamples(3), 66);
  EXPECT_EQ(converter.TicksToSamples(10), 221) << "220.5 rounds half away from zero";
}

TEST_F(OneTempo, TheLargestTickConverts) {
  EXPECT_EQ(converter.TicksToSamples(UINT_MAX), 94'704'028'855) << "22.05 * 4,294,967,295 = ...854.75";
}

TEST(TicksToSamples, ATickBeforeTheAudioStartIsSample0) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {100, 250'000}}), 480);
  EXPECT_EQ(converter.TicksToSamples(0), 0);
  EXPECT_EQ(converter.TicksToSamples(100), 0);
  EXPECT_EQ(converter.TicksToSamples(479), 0);
  EXPECT_EQ(converter.TicksToSamples(480), 0);
  EXPECT_EQ(converter.TicksToSamples(481), 11);
}

TEST(TicksToSamples, NothingIsConvertedOnAnEmptyMap) {
  SamplesTicksConverter converter;
  EXPECT_EQ(converter.TicksToSamples(0), 0);
  EXPECT_EQ(converter.TicksToSamples(UINT_MAX), 0);
}

TEST(TicksToSamples, WhenEveryEntryLiesLaterTheSampleIs0) {
  SamplesTicksConverter converter;
  EXPECT_THROW(converter.SetData(SongWithTempos({{960, 500'000}}), 0), std::logic_error);
  EXPECT_EQ(converter.TicksToSamples(959), 0);
}

TEST(TicksToSamples, OfTicksWithAnEntryOnlyThoseBeforeTheAudioStartAreSample0) {
  SamplesTicksConverter converter;
  EXPECT_THROW(converter.SetData(SongWithTempos({{480, 500'000}}), 960), std::logic_error);
  EXPECT_EQ(converter.TicksToSamples(959), 0);
  EXPECT_EQ(converter.TicksToSamples(960), 10584) << "the entry at 480 has no samples yet";
}

// ---- samples to the tick that contains them --------------------------------------------------------

struct SampleToTick {
  long long sample;
  unsigned tick;
  unsigned extra;
  const char* why;
};
void PrintTo(const SampleToTick& row, std::ostream* out) {
  *out << row.sample << " (" << row.why << ")";
}

class SamplesToTicksIntegerTable : public testing::TestWithParam<SampleToTick> {};

TEST_P(SamplesToTicksIntegerTable, GivesTheContainingTickAndTheRest) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}), 0);
  unsigned extra = ~0u;
  EXPECT_EQ(converter.SamplesToTicksInteger(GetParam().sample, &extra), GetParam().tick);
  EXPECT_EQ(extra, GetParam().extra);
  EXPECT_EQ(converter.SamplesToTicksInteger(GetParam().sample), GetParam().tick) << "without the rest";
}

INSTANTIATE_TEST_SUITE_P(RoundedBoundaries, SamplesToTicksIntegerTable,
                         testing::Values(SampleToTick{0, 0, 0, "the first sample"},
                                         SampleToTick{21, 0, 21, "last sample before tick 1"},
                                         SampleToTick{22, 1, 0, "first sample of tick 1"},
                                         SampleToTick{220, 9, 22, "tick 10 begins at 220.5, rounded up"},
                                         SampleToTick{221, 10, 0, "half rounds away from zero"},
                                         SampleToTick{222, 10, 1, "second sample of tick 10"}));

TEST_F(OneTempo, ASampleThatDividesToJustBelowATickBelongsToIt) {
  // 22 / 22.05 is 0.9977: without the correction upwards it would be the 23rd sample of tick 0.
  unsigned extra = ~0u;
  EXPECT_EQ(converter.SamplesToTicksInteger(22, &extra), 1u);
  EXPECT_EQ(extra, 0u);
}

TEST(SamplesToTicksInteger, ABoundaryIsGovernedByTheLaterTempo) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {11, 250'000}}), 0);  // tick 11 begins at 242.55, at 243
  EXPECT_EQ(converter.GetSamplesPerTick(242), static_cast<double>(0.0005 * 44100.0L));
  EXPECT_EQ(converter.GetSamplesPerTick(243), static_cast<double>(0.00025 * 44100.0L));
  unsigned extra = ~0u;
  EXPECT_EQ(converter.SamplesToTicksInteger(243, &extra), 11u);
  EXPECT_EQ(extra, 0u);
  int error = INT_MAX;
  EXPECT_EQ(converter.SamplesToTicksRounded(243, &error), 11u);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(converter.SamplesToTicksInteger(242, &extra), 10u);
  EXPECT_EQ(extra, 21u);
}

TEST(SamplesToTicksInteger, OfSeveralEntriesWithOneCountTheLastGoverns) {
  SamplesTicksConverter converter;
  // Ticks 0 and 100 lie before the audio start and hold 0 like the entry at 480.
  converter.SetData(SongWithTempos({{0, 500'000}, {100, 250'000}, {481, 500'000}}), 480);
  EXPECT_EQ(converter.SamplesToTicksInteger(0), 480u);
  EXPECT_EQ(converter.SamplesToTicksInteger(10), 480u);
  EXPECT_EQ(converter.SamplesToTicksInteger(11), 481u);
  EXPECT_EQ(converter.GetSamplesPerTick(0), static_cast<double>(0.00025 * 44100.0L));
}

TEST(SamplesToTicksInteger, AudioThatStartsLaterBeginsOnItsStartTick) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}), 480);
  unsigned extra = ~0u;
  EXPECT_EQ(converter.SamplesToTicksInteger(21, &extra), 480u);
  EXPECT_EQ(extra, 21u);
  EXPECT_EQ(converter.SamplesToTicksInteger(22, &extra), 481u);
  EXPECT_EQ(extra, 0u);
}

// ---- samples to the nearest tick -------------------------------------------------------------------

TEST_F(OneTempo, ASampleIsRoundedToTheNearestTickWithASignedDistance) {
  int error = 0;
  EXPECT_EQ(converter.SamplesToTicksRounded(33, &error), 1u) << "1.4966 ticks";
  EXPECT_EQ(error, -11);
  EXPECT_EQ(converter.SamplesToTicksRounded(34, &error), 2u) << "1.5420 ticks";
  EXPECT_EQ(error, 10);
  EXPECT_EQ(converter.SamplesToTicksRounded(0, &error), 0u);
  EXPECT_EQ(error, 0);
}

TEST(SamplesToTicksRounded, HalfATickIsRoundedUp) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}), 0);
  converter.SetSampleRate(48000.0L);  // 24 samples per tick
  int error = 0;
  EXPECT_EQ(converter.SamplesToTicksRounded(12, &error), 1u);
  EXPECT_EQ(error, 12);
  EXPECT_EQ(converter.SamplesToTicksRounded(11, &error), 0u);
  EXPECT_EQ(error, -11);
}

TEST_F(OneTempo, TheRoundedDistanceMayBeLeftOut) {
  EXPECT_EQ(converter.SamplesToTicksRounded(33, nullptr), 1u);
  EXPECT_EQ(converter.SamplesToTicksRounded(34), 2u);
}

TEST_F(OneTempo, RoundedTicksAreTakenModulo2To32) {
  EXPECT_EQ(converter.SamplesToTicksRounded(94'704'028'877), 0u) << "tick 2^32";
}

// 20 samples are a hair less than one and a half ticks of this rate, and exactly that in double.
TEST(SamplesToTicksRounded, TheTicksAreDividedInDouble) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 1'000'000}}, 1), 0);
  converter.SetSampleRate(0x1.aaaaaaaaaaaabp+3L);
  EXPECT_EQ(converter.SamplesToTicksRounded(20), 2u);
}

// Tick 1 begins at 2^53 + 1, which is 2^53 as a double: one sample later is two samples later then.
TEST(SamplesToTicksRounded, BothCountsAreDoublesBeforeTheyAreSubtracted) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 1'000'000}, {1, 1}}, 1), 0);
  converter.SetSampleRate(9'007'199'254'740'993.0L);
  ASSERT_EQ(converter.TicksToSamples(1), 9'007'199'254'740'993);
  int error = 0;
  EXPECT_EQ(converter.SamplesToTicksRounded(9'007'199'254'740'994, &error), 1u);
  EXPECT_EQ(error, -2);
}

TEST(GetSamplesPerTick, IsTheProductInLongDoubleRoundedToDouble) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 333'333}}, 480), 0);
  converter.SetSampleRate(44100.1L);
  const double tickTime = (333'333.0 / 1'000'000.0) / 480.0;
  EXPECT_EQ(converter.GetSamplesPerTick(0), static_cast<double>(tickTime * 44100.1L));
}

// ---- failures --------------------------------------------------------------------------------------

TEST_F(OneTempo, ANegativeSampleLiesBeforeTheMap) {
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { converter.SamplesToTicksRounded(-1); }, kBeforeTheMap));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { converter.SamplesToTicksInteger(-1); }, kBeforeTheMap));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { converter.GetSamplesPerTick(-1); }, kBeforeTheMap));
}

TEST(SamplesToTicks, AnEmptyMapContainsNoSample) {
  SamplesTicksConverter converter;
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { converter.SamplesToTicksRounded(0); }, kBeforeTheMap));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { converter.SamplesToTicksInteger(0); }, kBeforeTheMap));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { converter.GetSamplesPerTick(0); }, kBeforeTheMap));
}

std::string Failed(const char* function, const char* condition, int line) {
  return std::string("Assertion failed: ") + condition + ", function " + function +
         ", file Sources/samples_ticks_converter, line " + std::to_string(line) + ".";
}

TEST(SamplesToTicksRounded, ATempoWithoutLengthFailsTheRoundingCheck) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 0}}), 0);  // 0 / 0 ticks: not a number
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksRounded(0); },
      Failed("SamplesToTicksRounded", "fabs(roundingErrorTicks) < 1.0", 228)));
}

TEST(SamplesToTicksRounded, ASampleRateThatIsNotANumberFailsTheRoundingCheck) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}), 0);
  converter.SetSampleRate(std::numeric_limits<long double>::quiet_NaN());
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksRounded(1000); },
      Failed("SamplesToTicksRounded", "fabs(roundingErrorTicks) < 1.0", 228)));
}

// 2^54 - 1 is 2^54 as a double, the first sample of the next tick of 2^30 samples.
TEST(SamplesToTicksInteger, ASampleThatADoubleRoundsUpIsNotAfterItsTick) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 1'000'000}}, 1), 0);
  converter.SetSampleRate(1'073'741'824.0L);
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksInteger((1LL << 54) - 1); },
      Failed("SamplesToTicksInteger", "sampleCount >= sampleCountAtResultTicks", 335)));
}

// As for the nearest tick: 2^54 is two samples less than tick 2 begins at, and on it in double. Subtracted as
// integers first it would lie in tick 1, and fail later, in the check back.
TEST(SamplesToTicksInteger, BothCountsAreDoublesBeforeTheyAreSubtracted) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 1'000'000}, {1, 1'000'000}}, 1), 0);
  converter.SetSampleRate(9'007'199'254'740'993.0L);
  ASSERT_EQ(converter.TicksToSamples(2), (1LL << 54) + 2);
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksInteger(1LL << 54); },
      Failed("SamplesToTicksInteger", "sampleCount >= sampleCountAtResultTicks", 335)));
}

class LongSong : public testing::Test {
 protected:
  LongSong() {
    converter.SetData(SongWithTempos({{0, 500'000}}), 0);
    converter.SetSampleRate(48000.0L);  // 24 samples per tick: 2^32 is 16 samples into tick 178,956,970
  }

  SamplesTicksConverter converter;
};

// The last tick whose successor still begins within 32 bits.
TEST_F(LongSong, SamplesUpTo32BitsConvert) {
  const unsigned last = 178'956'969;
  unsigned extra = ~0u;
  EXPECT_EQ(converter.SamplesToTicksInteger(last * 24LL + 23, &extra), last);
  EXPECT_EQ(extra, 23u);
  EXPECT_EQ(converter.TicksToSamples(last + 1), 4'294'967'280);
}

TEST_F(LongSong, TheTickThatEndsPast32BitsHasNoSuccessor) {
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksInteger(4'294'967'280); },
      Failed("SamplesToTicksInteger", "sampleCountAtResultPlusOne > sampleCount", 372)));
  EXPECT_THROW(converter.SamplesToTicksInteger(4'294'967'295), exc::ExAssertionError);
}

TEST_F(LongSong, SamplesPast32BitsFailTheCheckBack) {
  unsigned extra = ~0u;
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksInteger(4'294'967'304 + 7, &extra); },
      Failed("SamplesToTicksInteger", "checkSampleCount == sampleCountAtResultTicks", 352)));
  EXPECT_EQ(extra, 7u) << "written before the checks";
  // The other conversions go on.
  EXPECT_EQ(converter.TicksToSamples(178'956'971), 4'294'967'304);
  EXPECT_EQ(converter.SamplesToTicksRounded(4'294'967'304), 178'956'971u);
}

TEST(SamplesToTicksInteger, ATempoWithoutLengthHasNoRemainderWithinATick) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 0}}), 0);
  unsigned extra = ~0u;
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksInteger(0, &extra); },
      Failed("SamplesToTicksInteger", "static_cast<double>(extraSamplesBeyondResultTicks) < samplesPerTick",
             367)));
  EXPECT_EQ(extra, 0u);
}

// A fifth of a sample per tick: several ticks begin on one sample, and the correction upwards is tried once.
TEST(SamplesToTicksInteger, TicksShorterThanSamplesHaveNoNextTickAfterTheSample) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 200'000}}), 0);
  converter.SetSampleRate(1000.0L);
  EXPECT_TRUE(ThrowsWithText<exc::ExAssertionError>(
      [&] { converter.SamplesToTicksInteger(0); },
      Failed("SamplesToTicksInteger", "sampleCountAtResultPlusOne > sampleCount", 372)));
}

// ---- the render path -------------------------------------------------------------------------------

TEST(RenderPath, ConversionsDoNotAllocate) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {960, 250'000}, {1960, 500'000}}), 480);
  unsigned extra = 0;
  int error = 0;
  long long sum = 0;
  test_support::AllocationWatch watch;
  for (long long sample = 0; sample < 100'000; sample += 997) {
    sum += converter.SamplesToTicksInteger(sample, &extra);
    sum += converter.SamplesToTicksRounded(sample, &error);
    sum += converter.TicksToSamples(static_cast<unsigned>(sample));
    sum += static_cast<long long>(converter.GetSamplesPerTick(sample));
  }
  EXPECT_EQ(watch.Count(), 0);
  EXPECT_GT(sum, 0);
}

}  // namespace
