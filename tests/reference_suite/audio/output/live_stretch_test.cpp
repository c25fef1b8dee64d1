// The live output at another tempo and in another key.
#include <gtest/gtest.h>

#include "tests/reference_suite/audio/support/audible_run.h"
#include "tests/reference_suite/audio/support/live_run.h"

namespace {

// What is rendered after the seek has begun with a seam. A second beginning behind it would splice.
TEST(LiveStretch, BehindASeekWhilePlayingNothingIsSplicedAgain) {
  const auto tone = Tones({330.0}, 0.5, 200'000);
  LiveRun run(Songs{{.frames = 200'000, .scales = {{0, 1.1L}}, .transpositions = {{0, 2}}, .sound = tone}},
              5.0, 3.0);
  run.Start();
  std::vector<float> heard;
  const auto hear = [&](std::size_t frames) {
    for (std::size_t done = 0; done < frames; done += 64) {
      ASSERT_TRUE(Await([&] { return run.device->IsReady(64); }));
      const std::vector<float> taken = run.device->Turn(64);
      heard.insert(heard.end(), taken.begin(), taken.end());
    }
  };
  hear(24'000);
  const std::size_t seeks = heard.size();
  run.player.SeekTo(100'000);
  hear(24'000);
  const double steady = LargestBend(heard, 8'000, seeks - 2'000);
  // From the first frame of the new place on, which fades in within 3 ms.
  EXPECT_LT(LargestBend(heard, seeks + 400, heard.size()), 1.2 * steady);
}

}  // namespace
