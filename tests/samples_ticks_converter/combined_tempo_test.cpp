#include "Sources/samples_ticks_converter/combined_tempo.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace {

template <typename T>
std::string Printed(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(CombinedTempo, StartsWithDefaultsThatCountAsUnknown) {
  const CombinedTempo tempo;
  EXPECT_FALSE(tempo.HasTickTime());
  EXPECT_FALSE(tempo.HasTempoScale());
  EXPECT_EQ(tempo.TickTime(), 0.001);
  EXPECT_EQ(tempo.TempoScale(), 1.0);
  EXPECT_EQ(tempo.Samples(), 0);
}

TEST(CombinedTempo, SettingTheTickTimeMakesItAloneKnown) {
  CombinedTempo tempo;
  tempo.TickTime(0.0005);
  EXPECT_EQ(tempo.TickTime(), 0.0005);
  EXPECT_TRUE(tempo.HasTickTime());
  EXPECT_FALSE(tempo.HasTempoScale());
}

TEST(CombinedTempo, SettingTheTempoScaleMakesItAloneKnown) {
  CombinedTempo tempo;
  tempo.TempoScale(0.95);
  EXPECT_EQ(tempo.TempoScale(), 0.95);
  EXPECT_TRUE(tempo.HasTempoScale());
  EXPECT_FALSE(tempo.HasTickTime());
}

TEST(CombinedTempo, SettingTheSamplesTouchesNeitherFlag) {
  CombinedTempo tempo;
  tempo.Samples(5'000'000'000);
  EXPECT_EQ(tempo.Samples(), 5'000'000'000);
  EXPECT_FALSE(tempo.HasTickTime());
  EXPECT_FALSE(tempo.HasTempoScale());
}

TEST(CombinedTempo, SecondsPerTickAreTheTickTimeDividedByTheScale) {
  CombinedTempo tempo;
  tempo.TickTime(0.0003);
  tempo.TempoScale(1.1);
  EXPECT_EQ(tempo.SecondsPerTick(), 0.0003 / 1.1);
}

TEST(CombinedTempo, PrintsItsThreeValuesInTheStreamsFormat) {
  CombinedTempo tempo;
  tempo.TickTime(0.0005);
  tempo.Samples(21168);
  EXPECT_EQ(Printed(tempo), "CombinedTempo(tick_time=0.0005, tempo_scale=1, samples=21168)");
  tempo.TickTime(0.1234567891);
  tempo.TempoScale(0.95);
  EXPECT_EQ(Printed(tempo), "CombinedTempo(tick_time=0.123457, tempo_scale=0.95, samples=21168)");
}

TEST(CombinedTempo, AMapsEntryPrintsItsTickABlankAndTheTempo) {
  std::map<unsigned, CombinedTempo> tempos;
  tempos[4'000'000'000] = CombinedTempo();
  EXPECT_EQ(Printed(*tempos.begin()), "4000000000 CombinedTempo(tick_time=0.001, tempo_scale=1, samples=0)");
}

}  // namespace
