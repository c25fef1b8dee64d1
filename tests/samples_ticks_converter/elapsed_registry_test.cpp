#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/console/cout_buffer.h"
#include "tests/support/cout_capture.h"
#include "tests/support/tempo_songs.h"

namespace {

using test_support::CoutCapture;
using test_support::SongWithTempos;

constexpr char kEmptyWarning[] =
    "[Warning] SamplesTicksConverter::tickIndexByElapsedSampleCount_ is empty. Returning 0.\n";
constexpr char kHeading[] = "SamplesTicksConverter::PrintLast20()\n";

// 22.05 samples per tick.
class ElapsedRegistry : public testing::Test {
 protected:
  ElapsedRegistry() { converter.SetData(SongWithTempos({{0, 500'000}}), 0); }

  std::string Listing() {
    CoutCapture console;
    {
      exc::CoutBuffer out;
      converter.PrintLast20(out);
    }
    return console.Text();
  }

  SamplesTicksConverter converter;
};

TEST_F(ElapsedRegistry, AQueryOnAnEmptyRegistryWarnsAndAnswers0) {
  CoutCapture console;
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(1000), 0u);
  EXPECT_EQ(console.Text(), kEmptyWarning);
}

TEST_F(ElapsedRegistry, AQueryBeforeTheFirstRegistrationWarnsInTheSameWords) {
  converter.RegisterElapsedSampleCount(1000, 480);
  CoutCapture console;
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(999), 0u);
  EXPECT_EQ(console.Text(), kEmptyWarning);
}

TEST_F(ElapsedRegistry, ANegativeCountIsAskedAs0) {
  converter.RegisterElapsedSampleCount(0, 7);
  converter.RegisterElapsedSampleCount(1, 960);
  CoutCapture console;
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(-1), 7u);
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(LLONG_MIN), 7u);
  EXPECT_EQ(console.Text(), "");
}

TEST_F(ElapsedRegistry, ANegativeRegistrationIsContinuedFromWhereItBegan) {
  converter.RegisterElapsedSampleCount(-22, 7);  // the tick was already 22 samples old at the baseline
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(0), 8u);
}

TEST_F(ElapsedRegistry, CountsAreContinuedFromTheRegistrationToTheNearestTick) {
  converter.RegisterElapsedSampleCount(0, 0);
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(221), 10u);
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(232), 11u) << "10.52 ticks";
}

TEST_F(ElapsedRegistry, AfterAJumpBackTheLaterRegistrationCounts) {
  converter.RegisterElapsedSampleCount(0, 0);
  converter.RegisterElapsedSampleCount(1000, 480);
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(1000), 480u);
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(999), 45u) << "999 samples from tick 0: 45.3 ticks";
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(1022), 481u);
}

TEST_F(ElapsedRegistry, ALaterRegistrationAtOneCountReplacesTheEarlier) {
  converter.RegisterElapsedSampleCount(0, 100);
  converter.RegisterElapsedSampleCount(0, 200);
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(0), 200u);
  EXPECT_EQ(Listing(), std::string(kHeading) + "    0, 200\n");
}

TEST_F(ElapsedRegistry, SettingTheAudioStartForgetsAllElse) {
  converter.SetData(SongWithTempos({{0, 500'000}}), 480);
  converter.RegisterElapsedSampleCount(0, 500);
  converter.RegisterElapsedSampleCount(9000, 600);
  converter.SetElapsedSampleCountAtAudioStart(5000);
  EXPECT_EQ(Listing(), std::string(kHeading) + "    5000, 480\n");
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(5000), 480u);
}

TEST_F(ElapsedRegistry, ResettingLeavesNothing) {
  converter.RegisterElapsedSampleCount(0, 1);
  converter.ResetElapsedSampleCounts();
  EXPECT_EQ(Listing(), kHeading);
  CoutCapture console;
  EXPECT_EQ(converter.GetTickIndexFromElapsedSampleCount(0), 0u);
  EXPECT_EQ(console.Text(), kEmptyWarning);
}

TEST_F(ElapsedRegistry, ANewSongLeavesTheRegistryAlone) {
  converter.RegisterElapsedSampleCount(5, 50);
  converter.SetData(SongWithTempos({{0, 250'000}}), 0);
  EXPECT_EQ(Listing(), std::string(kHeading) + "    5, 50\n");
}

TEST_F(ElapsedRegistry, ARecoveryCutsBackToItsPointAndRegistersItThere) {
  converter.RegisterElapsedSampleCount(0, 0);
  converter.RegisterElapsedSampleCount(4000, 90);
  converter.RegisterElapsedSampleCount(6000, 300);
  converter.ResetForRecovery(100, 5000);
  EXPECT_EQ(Listing(), std::string(kHeading) + "    0, 0\n    4000, 90\n    5000, 100\n");
}

TEST_F(ElapsedRegistry, ARecoveryAtARegistrationReplacesIt) {
  converter.RegisterElapsedSampleCount(4000, 90);
  converter.RegisterElapsedSampleCount(4001, 91);
  converter.ResetForRecovery(100, 4000);
  EXPECT_EQ(Listing(), std::string(kHeading) + "    4000, 100\n");
}

TEST_F(ElapsedRegistry, ARecoveryOnAnEmptyRegistryRegistersItsPoint) {
  converter.ResetForRecovery(100, 4000);
  EXPECT_EQ(Listing(), std::string(kHeading) + "    4000, 100\n");
}

std::string ListedFrom(int first, int last) {
  std::string text = kHeading;
  for (int i = first; i <= last; ++i)
    text += "    " + std::to_string(i * 10) + ", " + std::to_string(i) + "\n";
  return text;
}

// The limit is 100 and not the 20 of the name.
TEST_F(ElapsedRegistry, Of150RegistrationsTheLast100AreListed) {
  for (int i = 1; i <= 150; ++i) converter.RegisterElapsedSampleCount(i * 10, static_cast<unsigned>(i));
  EXPECT_EQ(Listing(), ListedFrom(51, 150));
}

TEST_F(ElapsedRegistry, ExactlyOneHundredAndOneMoreAreListedUpToTheLimit) {
  for (int i = 1; i <= 100; ++i) converter.RegisterElapsedSampleCount(i * 10, static_cast<unsigned>(i));
  EXPECT_EQ(Listing(), ListedFrom(1, 100));
  converter.RegisterElapsedSampleCount(1010, 101);
  EXPECT_EQ(Listing(), ListedFrom(2, 101));
}

TEST_F(ElapsedRegistry, FewerThan100AreAllListed) {
  converter.RegisterElapsedSampleCount(-5, 4'294'967'295);
  converter.RegisterElapsedSampleCount(5'000'000'000, 3);
  EXPECT_EQ(Listing(), std::string(kHeading) + "    -5, 4294967295\n    5000000000, 3\n");
}

TEST(ElapsedRegistryWithoutASong, TheConversionsErrorPasses) {
  SamplesTicksConverter converter;
  converter.RegisterElapsedSampleCount(0, 0);
  EXPECT_THROW(converter.GetTickIndexFromElapsedSampleCount(0), std::logic_error);
}

}  // namespace
