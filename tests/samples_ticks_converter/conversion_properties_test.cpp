#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "tests/samples_ticks_converter/plain_scan.h"
#include "tests/support/tempo_songs.h"

// What must hold for every song: a tick begins on one sample, that sample belongs to that tick, and the
// samples are shared out among the ticks without a gap. The songs are drawn at random, from seeds that are
// fixed.

namespace {

using test_support::SongWithTempos;
using test_support::TempoAt;

struct RandomSong {
  std::vector<TempoAt> tempos;
  unsigned short ppq;
  unsigned audioStart;
  long double sampleRate;
};

// 8,000 to 192,000 frames per second, 20 to 400 quarter notes a minute, ticks no shorter than two samples.
RandomSong DrawSong(std::uint64_t seed) {
  std::mt19937_64 random(seed);
  auto draw = [&](unsigned from, unsigned to) {
    return std::uniform_int_distribution<unsigned>(from, to)(random);
  };
  const long double rates[] = {8000.0L,  22050.0L, 44100.0L,  48000.0L,
                               88200.0L, 96000.0L, 192000.0L, 44099.97L};
  const unsigned short ppqs[] = {96, 120, 192, 240, 480, 960, 1000, 1920};
  RandomSong song;
  song.sampleRate = rates[draw(0, 7)];
  song.ppq = ppqs[draw(0, 7)];
  const double shortest = 2.0 * song.ppq / static_cast<double>(song.sampleRate) * 1e6;
  const unsigned fastest = std::max(150'000u, static_cast<unsigned>(shortest) + 1);
  const unsigned slowest = std::max(3'000'000u, fastest + 1);
  unsigned tick = 0;
  const unsigned count = draw(1, 40);
  for (unsigned i = 0; i < count; ++i) {
    song.tempos.push_back({tick, draw(fastest, slowest)});
    tick += draw(0, 3) == 0 ? draw(1, 3) : draw(1, 2 * song.ppq);
  }
  song.audioStart = draw(0, 2) == 0 ? 0 : draw(0, tick);
  if (draw(0, 3) == 0) song.audioStart = song.tempos[draw(0, count - 1)].tick;
  return song;
}

class RandomSongs : public testing::TestWithParam<int> {
 protected:
  RandomSongs() : song(DrawSong(static_cast<std::uint64_t>(GetParam()))) {
    converter.SetData(SongWithTempos(song.tempos, song.ppq), song.audioStart);
    converter.SetSampleRate(song.sampleRate);
    lastTick = std::max(song.tempos.back().tick, song.audioStart) + 500;
  }

  RandomSong song;
  SamplesTicksConverter converter;
  unsigned lastTick = 0;
};

TEST_P(RandomSongs, EveryTickSurvivesTheRoundTrip) {
  for (unsigned tick = song.audioStart; tick <= lastTick; ++tick) {
    const long long sample = converter.TicksToSamples(tick);
    unsigned extra = ~0u;
    ASSERT_EQ(converter.SamplesToTicksInteger(sample, &extra), tick);
    ASSERT_EQ(extra, 0u) << "tick " << tick;
  }
}

// The tempo in force is searched, and its last place remembered: no order of questions may change an answer.
TEST_P(RandomSongs, AreConvertedAsByAPlainScan) {
  const PlainScan scan(song.tempos, song.ppq, song.audioStart, song.sampleRate);
  std::mt19937_64 random(static_cast<std::uint64_t>(GetParam()));
  const long long lastSample = scan.TicksToSamples(lastTick);
  long long sample = 0;
  for (int i = 0; i < 3'000; ++i) {
    const bool plays = i % 4 != 0;
    sample =
        plays ? std::min(sample + 64, lastSample) : std::uniform_int_distribution(0LL, lastSample)(random);
    const unsigned tick = scan.Rounded(sample);
    ASSERT_EQ(converter.SamplesToTicksRounded(sample), tick) << sample;
    unsigned extra = 0;
    unsigned scannedExtra = 0;
    const unsigned scanned = scan.Integer(sample, &scannedExtra);
    ASSERT_EQ(converter.SamplesToTicksInteger(sample, &extra), scanned) << sample;
    ASSERT_EQ(extra, scannedExtra) << sample;
    ASSERT_EQ(converter.GetSamplesPerTick(sample), scan.SamplesPerTick(sample)) << sample;
    ASSERT_EQ(converter.TicksToSamples(tick), scan.TicksToSamples(tick)) << sample;
    if (plays) continue;
    const unsigned anyTick = std::uniform_int_distribution(0u, lastTick)(random);
    ASSERT_EQ(converter.TicksToSamples(anyTick), scan.TicksToSamples(anyTick));
  }
}

TEST_P(RandomSongs, LaterTicksBeginOnLaterSamples) {
  ASSERT_EQ(converter.TicksToSamples(song.audioStart), 0);
  long long before = -1;
  for (unsigned tick = song.audioStart; tick <= lastTick; ++tick) {
    const long long sample = converter.TicksToSamples(tick);
    ASSERT_GT(sample, before) << "tick " << tick;
    before = sample;
  }
}

TEST_P(RandomSongs, TicksBeforeTheAudioStartAreSample0) {
  for (unsigned tick = 0; tick < song.audioStart; ++tick) ASSERT_EQ(converter.TicksToSamples(tick), 0);
}

// Around every tick boundary, and in its middle: the sample lies in the tick found, as far in as it says.
TEST_P(RandomSongs, EverySampleLiesInTheTickThatIsFound) {
  for (unsigned tick = song.audioStart; tick < lastTick; ++tick) {
    const long long first = converter.TicksToSamples(tick);
    const long long next = converter.TicksToSamples(tick + 1);
    for (const long long sample : {first, first + 1, (first + next) / 2, next - 1}) {
      unsigned extra = ~0u;
      ASSERT_EQ(converter.SamplesToTicksInteger(sample, &extra), tick) << "sample " << sample;
      ASSERT_EQ(extra, sample - first) << "sample " << sample;
    }
  }
}

TEST_P(RandomSongs, TheNearestTickIsThatOfTheFirstSampleOrOneOfItsNeighbours) {
  for (unsigned tick = song.audioStart; tick < lastTick; ++tick) {
    const long long first = converter.TicksToSamples(tick);
    int error = 99;
    ASSERT_EQ(converter.SamplesToTicksRounded(first, &error), tick);
    ASSERT_LE(std::abs(error), 1) << "a tick begins at most half a sample beside its own time";
    const unsigned nearest =
        converter.SamplesToTicksRounded((first + converter.TicksToSamples(tick + 1)) / 2);
    ASSERT_TRUE(nearest == tick || nearest == tick + 1);
  }
}

// 10,000 tempos, many of them before the audio starts, and many so short that they begin on one sample with
// the next: of those the last is in force.
TEST(SongOfTenThousandTempos, IsConvertedAsByAPlainScan) {
  std::mt19937_64 random(1);
  auto draw = [&](unsigned from, unsigned to) {
    return std::uniform_int_distribution<unsigned>(from, to)(random);
  };
  RandomSong song{{}, 1920, 0, 8000.0L};
  for (unsigned tick = 0; song.tempos.size() < 10'000; tick += draw(1, 3))
    song.tempos.push_back({tick, draw(10'000, 150'000)});
  song.audioStart = song.tempos[2'000].tick;
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos(song.tempos, song.ppq), song.audioStart);
  converter.SetSampleRate(song.sampleRate);
  const PlainScan scan(song.tempos, song.ppq, song.audioStart, song.sampleRate);
  const unsigned lastTick = song.tempos.back().tick + 100;
  const long long lastSample = scan.TicksToSamples(lastTick);
  ASSERT_LT(lastSample, 8'000) << "fewer samples than tempos, so that many share one";
  for (long long sample = 0; sample <= lastSample; ++sample) {
    ASSERT_EQ(converter.SamplesToTicksRounded(sample), scan.Rounded(sample)) << sample;
    ASSERT_EQ(converter.GetSamplesPerTick(sample), scan.SamplesPerTick(sample)) << sample;
  }
  for (int i = 0; i < 10'000; ++i) {
    const unsigned tick = draw(0, lastTick);
    ASSERT_EQ(converter.TicksToSamples(tick), scan.TicksToSamples(tick)) << tick;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSongs, testing::Range(1, 41));

// Sample by sample, for a tempo at which nearly every boundary is rounded.
TEST(EverySample, BelongsToOneTickWithoutAGap) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}, {100, 371'111}, {101, 499'999}, {977, 123'457}}), 50);
  unsigned tick = 50;
  unsigned extra = 0;
  for (long long sample = 0; sample < 60'000; ++sample) {
    if (sample == converter.TicksToSamples(tick + 1)) {
      ++tick;
      extra = 0;
    }
    unsigned found = ~0u;
    ASSERT_EQ(converter.SamplesToTicksInteger(sample, &found), tick) << "sample " << sample;
    ASSERT_EQ(found, extra) << "sample " << sample;
    ++extra;
  }
}

TEST(EveryTick, OfALongSongSurvivesTheRoundTrip) {
  SamplesTicksConverter converter;
  converter.SetData(SongWithTempos({{0, 500'000}}), 0);
  for (unsigned tick = 0; tick < 100'000; ++tick) {
    unsigned extra = ~0u;
    ASSERT_EQ(converter.SamplesToTicksInteger(converter.TicksToSamples(tick), &extra), tick);
    ASSERT_EQ(extra, 0u) << "tick " << tick;
  }
}

}  // namespace
