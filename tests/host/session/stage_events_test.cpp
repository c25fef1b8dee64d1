#include "host/session/stage_events.h"

#include <gtest/gtest.h>

#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"

namespace orbel::host {
namespace {

void Tell(const std::vector<float>& peaks, long long xruns) {
  notify::MetersUpdate meters;
  meters.peaks = peaks;
  meters.xruns = xruns;
  notify::callbackDispatcher.Notify(notify::names::audio_meters, &meters);
}

TEST(StageEvents, MetersThatNobodyTookInTimeLeaveTheirPeaks) {
  StageEvents events;
  Tell({0.5F, 0.1F}, 1);
  Tell({0.25F, 0.75F}, 2);
  const auto meters = events.TakeMeters();
  ASSERT_TRUE(meters);
  EXPECT_EQ(meters->peaks, (std::vector<float>{0.5F, 0.75F}));
  EXPECT_EQ(meters->xruns, 2) << "all else is as it was told last";
  EXPECT_FALSE(events.TakeMeters());
  Tell({0.125F, 0.0F}, 2);
  EXPECT_EQ(events.TakeMeters()->peaks, (std::vector<float>{0.125F, 0.0F}));
}

TEST(StageEvents, MetersOfAnotherNumberOfChannelsTakeTheirPlace) {
  StageEvents events;
  Tell({0.5F, 0.1F}, 0);
  Tell({0.25F}, 0);
  EXPECT_EQ(events.TakeMeters()->peaks, (std::vector<float>{0.5F}));
}

}  // namespace
}  // namespace orbel::host
