#include "reference_suite/audio/output/frame_ring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <random>
#include <thread>

#include "tests/support/allocation_watch.h"

namespace {

using tesk_audio::FrameRing;

TEST(FrameRing, HasRoomForAtLeastWhatWasAskedFor) {
  for (const std::size_t frames : {1U, 2U, 3U, 64U, 65U, 1000U}) {
    EXPECT_GE(FrameRing(frames, 2).GetFree(), frames);
  }
}

// Whatever is written, read and skipped in whatever order, it behaves as a queue does.
TEST(FrameRing, BehavesAsAQueue) {
  std::mt19937 random(4711);
  const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  for (int round = 0; round < 300; ++round) {
    const auto channels = static_cast<unsigned>(1 + below(3));
    FrameRing ring(1 + below(99), channels);
    const std::size_t capacity = ring.GetFree();
    std::deque<float> model;
    float next = 1.0F;
    for (int step = 0; step < 100; ++step) {
      const std::size_t what = below(5);
      const std::size_t count = std::min(below(120), what < 2 ? ring.GetFree() : ring.GetAvailable());
      std::vector<float> frames(count * channels);
      if (what < 2) {
        for (float& sample : frames) sample = next++;
        ring.Write(frames.data(), count);
        model.insert(model.end(), frames.begin(), frames.end());
      } else {
        const auto end = model.begin() + static_cast<std::ptrdiff_t>(count * channels);
        if (what < 4) {
          ring.Read(frames.data(), count);
          ASSERT_TRUE(std::equal(frames.begin(), frames.end(), model.begin(), end));
        } else {
          ring.SkipTo(ring.GetReadPosition() + count);
        }
        model.erase(model.begin(), end);
      }
      ASSERT_EQ(ring.GetAvailable() * channels, model.size());
      ASSERT_EQ(ring.GetFree() + ring.GetAvailable(), capacity);
      ASSERT_EQ(ring.GetWritePosition() - ring.GetReadPosition(), ring.GetAvailable());
    }
  }
}

TEST(FrameRing, SkippingBackwardsDoesNothing) {
  FrameRing ring(16, 1);
  const std::vector<float> frames(10, 1.0F);
  ring.Write(frames.data(), 10);
  ring.SkipTo(5);
  ring.SkipTo(3);
  EXPECT_EQ(ring.GetReadPosition(), 5U);
}

TEST(FrameRing, WhatWasReadCanBeReadAgainAsFarAsItIsKept) {
  FrameRing ring(8, 1, 8);
  std::vector<float> frames(100);
  const auto write = [&](std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) frames[i] = static_cast<float>(ring.GetWritePosition() + i);
    ring.Write(frames.data(), count);
  };
  const auto reads = [&](std::size_t first, std::size_t count) {
    ring.Read(frames.data(), count);
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(frames[i], static_cast<float>(first + i));
  };
  EXPECT_EQ(ring.GetFree(), 8U);
  for (int round = 0; round < 10; ++round) {
    write(ring.GetFree());
    ring.Read(frames.data(), 5);
  }
  const std::size_t position = ring.GetReadPosition();
  write(ring.GetFree());
  ring.GoBackTo(position - 3);
  EXPECT_EQ(ring.GetFree(), 0U) << "the writer waits until it has come as far again";
  reads(position - 3, 6);
  ring.GoBackTo(0);
  EXPECT_EQ(ring.GetReadPosition(), position + 3 - 8) << "no further than that";
  reads(position - 5, 8);
  ring.GoBackTo(0);
  EXPECT_EQ(ring.GetReadPosition(), position - 5) << "nor however often";
  ring.GoBackTo(position);
  EXPECT_EQ(ring.GetReadPosition(), position - 5) << "and never forwards";
}

TEST(FrameRing, WhatWasPassedOverIsNotReadAgain) {
  FrameRing ring(32, 1, 16);
  const std::vector<float> frames(20, 1.0F);
  std::vector<float> read(20);
  ring.Write(frames.data(), 20);
  ring.Read(read.data(), 4);
  ring.SkipTo(10);
  ring.Read(read.data(), 3);
  ring.GoBackTo(0);
  EXPECT_EQ(ring.GetReadPosition(), 10U);
}

// The reader goes back whenever it likes, while another thread writes.
TEST(FrameRing, GoingBackFindsEveryFrameWhileTheWriterWrites) {
  FrameRing ring(64, 1, 40);
  constexpr std::uint64_t kFrames = 100'000;
  std::atomic<bool> ends{false};
  std::thread writer([&] {
    std::vector<float> frames(64);
    while (!ends && ring.GetWritePosition() < kFrames) {
      const std::size_t count = std::min<std::size_t>(ring.GetFree(), 13);
      for (std::size_t i = 0; i < count; ++i) frames[i] = static_cast<float>(ring.GetWritePosition() + i);
      ring.Write(frames.data(), count);
      if (count == 0) std::this_thread::yield();
    }
  });
  std::mt19937 random(3);
  std::vector<float> frames(64);
  bool isRight = true;
  while (isRight && ring.GetReadPosition() < kFrames) {
    const std::uint64_t position = ring.GetReadPosition();
    const std::size_t count = std::min<std::size_t>(ring.GetAvailable(), random() % 64);
    ring.Read(frames.data(), count);
    for (std::size_t i = 0; i < count; ++i)
      isRight = isRight && frames[i] == static_cast<float>(position + i);
    if (random() % 3 == 0)
      ring.GoBackTo(ring.GetReadPosition() - std::min<std::uint64_t>(position, random() % 60));
    if (count == 0) std::this_thread::yield();
  }
  ends = true;
  writer.join();
  EXPECT_TRUE(isRight);
}

TEST(FrameRing, CarriesEveryFrameFromThreadToThread) {
  FrameRing ring(100, 2);
  constexpr int kFrames = 200'000;
  std::thread writer([&ring] {
    std::mt19937 random(1);
    std::vector<float> frames(2 * 64);
    for (int written = 0; written < kFrames;) {
      const int count =
          std::min({static_cast<int>(ring.GetFree()), static_cast<int>(random() % 64), kFrames - written});
      for (int i = 0; i < count; ++i) {
        frames[static_cast<std::size_t>(2 * i)] = static_cast<float>(written + i);
        frames[static_cast<std::size_t>(2 * i + 1)] = -static_cast<float>(written + i);
      }
      ring.Write(frames.data(), static_cast<std::size_t>(count));
      written += count;
      if (count == 0) std::this_thread::yield();
    }
  });
  std::mt19937 random(2);
  std::vector<float> frames(2 * 64);
  bool isRight = true;
  for (int read = 0; read < kFrames;) {
    const int count = std::min(static_cast<int>(ring.GetAvailable()), static_cast<int>(random() % 64));
    ring.Read(frames.data(), static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
      isRight = isRight && frames[static_cast<std::size_t>(2 * i)] == static_cast<float>(read + i) &&
                frames[static_cast<std::size_t>(2 * i + 1)] == -static_cast<float>(read + i);
    }
    read += count;
    if (count == 0) std::this_thread::yield();
  }
  writer.join();
  EXPECT_TRUE(isRight);
  EXPECT_EQ(ring.GetAvailable(), 0U);
}

TEST(FrameRing, AllocatesNothing) {
  FrameRing ring(100, 2);
  std::vector<float> frames(200);
  const test_support::AllocationWatch watch;
  for (int i = 0; i < 1000; ++i) {
    ring.Write(frames.data(), 77);
    ring.Read(frames.data(), 77);
  }
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
