#include "reference_suite/audio/output/load_meter.h"

#include <gtest/gtest.h>

#include "reference_suite/audio/output/output_meters.h"
#include "tests/reference_suite/audio/support/live_run.h"

namespace {

using tesk_audio::LoadMeter;

TEST(LoadMeter, BeforeTheFirstEverythingIsNothing) {
  const LoadMeter meter;
  EXPECT_EQ(meter.GetQuantile(0.5), 0.0);
  EXPECT_EQ(meter.GetLongest(), 0.0);
  EXPECT_EQ(meter.GetCount(), 0);
}

TEST(LoadMeter, TellsMedianTailAndLongestToATwentieth) {
  LoadMeter meter;
  for (int i = 0; i < 990; ++i) meter.Add(0.01);
  for (int i = 0; i < 9; ++i) meter.Add(0.2);
  meter.Add(0.7);
  EXPECT_EQ(meter.GetCount(), 1'000);
  EXPECT_GE(meter.GetQuantile(0.5), 0.01);
  EXPECT_LE(meter.GetQuantile(0.5), 0.0105);
  EXPECT_GE(meter.GetQuantile(0.999), 0.2);
  EXPECT_LE(meter.GetQuantile(0.999), 0.21);
  EXPECT_EQ(meter.GetQuantile(1.0), 0.7);
  EXPECT_EQ(meter.GetLongest(), 0.7);
}

TEST(LoadMeter, TakesLoadsOfEverySize) {
  LoadMeter meter;
  meter.Add(0.0);
  meter.Add(1e9);
  EXPECT_EQ(meter.GetLongest(), 1e9);
  EXPECT_EQ(meter.GetCount(), 2);
}

TEST(OutputMeters, ThereAreNoneWithoutALiveOutput) {
  tesk_audio::OutputMeters meters;
  EXPECT_FALSE(tesk_audio::ReadOutputMeters(&meters));
}

TEST(OutputMeters, TellHowTheLiveOutputIsDoing) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->latency = 480;
  run.device->xruns = 5;
  run.Start();
  ASSERT_TRUE(run.HasPlanned(720));
  tesk_audio::OutputMeters meters;
  ASSERT_TRUE(tesk_audio::ReadOutputMeters(&meters));
  EXPECT_EQ(meters.device, "test device");
  EXPECT_FALSE(meters.recovering);
  ASSERT_EQ(meters.peaks.size(), 1U);
  EXPECT_GE(meters.peaks[0], 720.0F) << "frame n holds n + 1";
  EXPECT_GE(meters.ringMs, 15.0);
  EXPECT_EQ(meters.latencyMs, 10.0);
  EXPECT_EQ(meters.underrunFrames, 0);
  EXPECT_EQ(meters.xruns, 5);
  EXPECT_EQ(meters.periodFrames, run.device->GetPeriodFrames());
  // More than there is: the rest is silence, and is counted.
  ASSERT_TRUE(Await([&] {
    run.device->Turn(30'000);
    return run.output->GetUnderrunFrames() > 0;
  }));
  ASSERT_TRUE(tesk_audio::ReadOutputMeters(&meters));
  EXPECT_EQ(meters.underrunFrames, run.output->GetUnderrunFrames());
  EXPECT_GT(meters.underrunFrames, 0);
  // Silence that the device gave by itself is heard as well.
  run.device->silentFrames = 7;
  ASSERT_TRUE(tesk_audio::ReadOutputMeters(&meters));
  EXPECT_EQ(meters.underrunFrames, run.output->GetUnderrunFrames() + 7);
  ASSERT_TRUE(Await([&] {
    run.device->Turn(64);
    tesk_audio::ReadOutputMeters(&meters);
    return meters.loadLongest > 0.0;
  }));
  EXPECT_LE(meters.loadMedian, meters.load999);
  EXPECT_LE(meters.load999, meters.loadLongest);
}

}  // namespace
