#include "reference_suite/audio/decode/frame_store.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <utility>

#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/allocation_watch.h"

namespace {

TEST(FrameStore, WhateverIsAppendedInWhateverPartsIsReadInAnyParts) {
  std::mt19937 random(17);
  for (int round = 0; round < 50; ++round) {
    const unsigned channels = 1 + static_cast<unsigned>(random() % 4);
    tesk_audio::FrameStore store(channels);
    std::vector<float> expected;
    for (int part = 0; part < 6; ++part) {
      const std::size_t frames = random() % 40'000;
      if (random() % 4 == 0) {
        store.AppendSilence(frames);
        expected.resize(expected.size() + frames * channels, 0.0F);
        continue;
      }
      const std::vector<float> samples =
          sound_files::Noise(static_cast<long long>(frames), channels, static_cast<unsigned>(random()));
      store.Append(samples.data(), frames);
      expected.insert(expected.end(), samples.begin(), samples.end());
    }
    if (random() % 2 == 0) {
      const auto keep = static_cast<std::size_t>(store.FrameCount()) / 2;
      store.Truncate(static_cast<long long>(keep));
      expected.resize(keep * channels);
      store.AppendSilence(1000);
      expected.resize((keep + 1000) * channels, 0.0F);
    }
    const long long frames = store.FrameCount();
    ASSERT_EQ(static_cast<std::size_t>(frames) * channels, expected.size());
    for (int read = 0; read < 20; ++read) {
      const long long start = static_cast<long long>(random()) % (frames + 1);
      const long long count = static_cast<long long>(random()) % (frames - start + 1);
      std::vector<float> samples(static_cast<std::size_t>(count) * channels);
      store.Read(start, count, samples.data());
      const auto from = expected.begin() + start * channels;
      ASSERT_TRUE(std::equal(samples.begin(), samples.end(), from)) << start << " +" << count;
    }
  }
}

TEST(FrameStore, TruncatingToMoreChangesNothing) {
  tesk_audio::FrameStore store(2);
  store.AppendSilence(10);
  store.Truncate(11);
  EXPECT_EQ(store.FrameCount(), 10);
}

TEST(FrameStore, GoesOnWithTheFramesOfAnother) {
  tesk_audio::FrameStore store(2);
  const auto block = static_cast<long long>(store.BlockFrames());
  const std::vector<float> samples = sound_files::IndexCoded(3 * block + 5, 2);
  store.Append(samples.data(), static_cast<std::size_t>(block) + 100);
  store.Truncate(block);
  tesk_audio::FrameStore next(2);
  next.Append(samples.data() + 2 * block, static_cast<std::size_t>(2 * block + 5));
  store.Append(std::move(next));
  store.Close();
  ASSERT_EQ(store.FrameCount(), 3 * block + 5);
  std::vector<float> read(samples.size());
  store.Read(0, store.FrameCount(), read.data());
  EXPECT_TRUE(read == samples);
}

TEST(FrameStore, KeepsNoMoreMemoryThanItsFramesNeed) {
  const auto residentBytes = [] {
    long long pages = 0;
    long long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
  };
  const long long before = residentBytes();
  tesk_audio::FrameStore store(2);
  const std::size_t minute = 48000 * 60;
  store.AppendSilence(minute);
  store.Close();
  const long long grown = residentBytes() - before;
  EXPECT_GE(grown, static_cast<long long>(minute * 2 * sizeof(float)));
  EXPECT_LE(grown, 22LL << 20);
}

TEST(FrameStore, ReadingAllocatesNothing) {
  tesk_audio::FrameStore store(2);
  store.AppendSilence(200'000);
  std::vector<float> samples(400'000);
  const test_support::AllocationWatch watch;
  store.Read(0, 200'000, samples.data());
  EXPECT_EQ(watch.Count(), 0);
}

}  // namespace
