// The live output at another tempo and in another key.
#include <gtest/gtest.h>

#include "tests/reference_suite/audio/support/audible_run.h"
#include "tests/reference_suite/audio/support/stepped_run.h"

namespace {

// How many places there are in [from, to) at which the sound bends by more than that.
int CountBends(const std::vector<float>& heard, std::size_t from, std::size_t to, double most) {
  int count = 0;
  for (std::size_t i = from; i < to; ++i) {
    if (LargestBend(heard, i, i + 3) <= most) continue;
    ++count;
    i += 8;
  }
  return count;
}

// What is rendered after the seek has begun with a splice: without fades that is heard, and no other. A
// second beginning behind it would be another.
TEST(LiveStretch, ASeekWhilePlayingBeginsOnce) {
  constexpr long long kFrames = 200'000;
  SteppedRun run(Songs{{.frames = kFrames,
                        .scales = {{0, 1.1L}},
                        .transpositions = {{0, 2}},
                        .sound = Tones({330.0}, 0.5, kFrames)}},
                 64);
  run.player.RewindAndRefill();
  run.Play();
  run.StepUntil(24'000);
  const std::size_t seeks = run.Heard().size();
  run.player.SeekTo(100'000);
  run.StepUntil(48'000);
  EXPECT_EQ(run.output->GetUnderrunFrames(), 0);
  const double steady = LargestBend(run.Heard(), 8'000, seeks - 2'000);
  EXPECT_LT(steady, 0.0017);
  EXPECT_EQ(CountBends(run.Heard(), 8'000, seeks - 2'000, 1.2 * steady), 0);
  EXPECT_EQ(CountBends(run.Heard(), seeks - 2'000, run.Heard().size() - 3, 1.2 * steady), 1);
}

}  // namespace
