// What a render step asks of the system, as recorded and stretched: memory where the stretcher begins or
// changes, and nothing else ever: no file, no device, nothing that it would wait for.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <thread>

#include "tests/reference_suite/audio/support/audible_run.h"
#include "tests/support/system_call_watch.h"

namespace {

using tesk_audio::StretchQuality;

class RenderStepWatch : public testing::TestWithParam<StretchQuality> {};

TEST_P(RenderStepWatch, CallsNothingOfTheSystemButForMemory) {
  constexpr long long kFrames = 400'000;
  AudibleRun run(Songs{{.frames = kFrames,
                        .jumps = {{60'000, {20'000}}, {200'000, {150'000}}},
                        .scales = {{0, 1.0L}, {100'000, 0.9L}, {130'000, 0.91L}, {250'000, 1.0L}},
                        .isAttacca = true,
                        .transpositions = {{170'000, 2}, {300'000, -3}},
                        .sound = Tones({110.0, 277.2, 440.0}, 0.2, kFrames)},
                       {.frames = 100'000, .scales = {{0, 1.2L}}, .sound = Tones({330.0}, 0.2, 100'000)}},
                 5.0, 0.0, 48000.0, 1, GetParam());
  run.heard.reserve(4 * kFrames);
  run.Start();
  const int before = test_support::GetForbiddenSystemCalls();
  int steps = 0;
  bool isWatched = false;
  std::thread([&] {
    isWatched = test_support::ForbidSystemCallsBut({SYS_brk, SYS_mmap, SYS_mremap, SYS_mprotect});
    steps = run.Run();
  }).join();
  ASSERT_TRUE(isWatched) << "the system does not let its calls be watched";
  EXPECT_GT(steps, 1'000);
  EXPECT_EQ(test_support::GetForbiddenSystemCalls(), before);
  EXPECT_GT(run.heard.size(), 500'000U);
}

INSTANTIATE_TEST_SUITE_P(Qualities, RenderStepWatch,
                         testing::Values(StretchQuality::Faster, StretchQuality::Finer));

}  // namespace
