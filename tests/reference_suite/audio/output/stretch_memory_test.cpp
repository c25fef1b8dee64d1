// What the stretched path asks of the allocator: nothing, but for what the library does when a factor
// changes.
#include <gtest/gtest.h>

#include "tests/reference_suite/audio/support/audible_run.h"
#include "tests/support/allocation_watch.h"

namespace {

using tesk_audio::StretchQuality;

struct Plays {
  StretchQuality quality;
  double scale;
  int semitones;
};

class StretchMemory : public testing::TestWithParam<Plays> {};

// Allocations of each step of a song.
std::vector<int> AllocationsOfSteps(const Plays& plays) {
  constexpr long long kFrames = 480'000;
  AudibleRun run(Songs{{.frames = kFrames,
                        .scales = {{0, plays.scale}},
                        .transpositions = {{0, plays.semitones}},
                        .sound = Tones({110.0, 277.2, 440.0}, 0.2, kFrames)}},
                 5.0, 0.0, 48000.0, 1, plays.quality);
  run.heard.reserve(4 * kFrames);
  run.Start();
  std::vector<int> all;
  all.reserve(10'000);
  for (bool ran = true; ran;) {
    const test_support::AllocationWatch watch;
    ran = run.Step();
    all.push_back(watch.Count());
  }
  return all;
}

TEST_P(StretchMemory, IsNotAskedForWhileAFactorStays) {
  const std::vector<int> all = AllocationsOfSteps(GetParam());
  ASSERT_GT(all.size(), 1'000U);
  int steady = 0;
  for (std::size_t i = 100; i + 10 < all.size(); ++i) steady += all[i];
  EXPECT_EQ(steady, 0);
}

INSTANTIATE_TEST_SUITE_P(Qualities, StretchMemory,
                         testing::Values(Plays{StretchQuality::Faster, 1.0, 0},
                                         Plays{StretchQuality::Faster, 1.1, 2},
                                         Plays{StretchQuality::Faster, 0.8, -3},
                                         Plays{StretchQuality::Finer, 1.1, 2},
                                         Plays{StretchQuality::Finer, 0.8, -3}));

}  // namespace
