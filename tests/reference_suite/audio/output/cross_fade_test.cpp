#include "reference_suite/audio/output/cross_fade.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/allocation_watch.h"

namespace {

TEST(CrossFade, KeepsThePowerOfUnrelatedSignals) {
  // One source in the left channel, the other in the right.
  tesk_audio::CrossFade fade(2, 100);
  for (std::size_t i = 0; i < 100; ++i) {
    fade.Outgoing()[2 * i] = 0.0F;
    fade.Outgoing()[2 * i + 1] = 1.0F;
  }
  fade.Begin();
  std::vector<float> frames(200);
  for (std::size_t i = 0; i < 100; ++i) frames[2 * i] = 1.0F;
  fade.Apply(frames.data(), 100);
  for (std::size_t i = 0; i < 100; ++i) {
    EXPECT_NEAR(frames[2 * i] * frames[2 * i] + frames[2 * i + 1] * frames[2 * i + 1], 1.0F, 1e-6F) << i;
    if (i > 0) {
      EXPECT_GT(frames[2 * i], frames[2 * i - 2]);
      EXPECT_LT(frames[2 * i + 1], frames[2 * i - 1]);
    }
  }
  EXPECT_FALSE(fade.IsActive());
}

TEST(CrossFade, LeavesEverySampleAloneBeforeAndAfter) {
  tesk_audio::CrossFade fade(1, 10);
  std::vector<float> frames(30, 0.7F);
  fade.Apply(frames.data(), 30);
  EXPECT_EQ(frames, std::vector<float>(30, 0.7F));
  std::fill_n(fade.Outgoing(), 10, 0.1F);
  fade.Begin();
  EXPECT_TRUE(fade.IsActive());
  fade.Apply(frames.data(), 30);
  EXPECT_EQ(std::count(frames.begin(), frames.end(), 0.7F), 20);
  EXPECT_EQ(frames[10], 0.7F);
}

TEST(CrossFade, CanceledItIsGone) {
  tesk_audio::CrossFade fade(1, 10);
  std::fill_n(fade.Outgoing(), 10, 0.1F);
  fade.Begin();
  fade.Cancel();
  std::vector<float> frames(10, 0.7F);
  fade.Apply(frames.data(), 10);
  EXPECT_EQ(frames, std::vector<float>(10, 0.7F));
}

TEST(CrossFade, OfNoLengthDoesNothing) {
  tesk_audio::CrossFade fade(2, 0);
  fade.Begin();
  EXPECT_FALSE(fade.IsActive());
  std::vector<float> frames(10, 0.7F);
  fade.Apply(frames.data(), 5);
  EXPECT_EQ(frames, std::vector<float>(10, 0.7F));
}

TEST(CrossFade, AllocatesNothing) {
  tesk_audio::CrossFade fade(2, 240);
  std::vector<float> frames(600, 0.5F);
  const test_support::AllocationWatch watch;
  for (int i = 0; i < 10; ++i) {
    std::fill_n(fade.Outgoing(), 480, 0.1F);
    fade.Begin();
    fade.Apply(frames.data(), 100);
  }
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
