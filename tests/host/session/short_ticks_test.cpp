#include "host/session/short_ticks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/assertion/ex_assertion_error.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"
#include "tests/support/tempo_songs.h"

namespace orbel::host {
namespace {

using test_support::SongWithTempos;
using test_support::TempoAt;

constexpr double kRate = 48'000.0;

CL::SongLog NoCues() {
  return {};
}

CL::SongLog CaesuraAt(TickIndex tick) {
  CL::SongLog log;
  log.caesuras.Add(CL::Caesura(tick, 7));
  return log;
}

TEST(ShortTicks, ATickOfAFrameOrMoreIsNeverTooShort) {
  // 24,000 ticks a quarter note at 120 a minute: exactly a frame a tick.
  const auto song = SongWithTempos({{0, 500'000}}, 24'000, {96'000, 0, 0});
  for (const TickIndex tick : {1U, 7U, 8U, 9U, 50'000U, 96'000U})
    EXPECT_FALSE(FindShortTick(song, CaesuraAt(tick), kRate)) << tick;
}

TEST(ShortTicks, BelowHalfAFrameThereAreFramesWithoutATick) {
  const auto song = SongWithTempos({{0, 500'000}, {960, 333'333}}, 32'767, {200'000, 0, 0});
  const auto found = FindShortTick(song, NoCues(), kRate);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->kind, ShortTick::Kind::FrameWithoutTick);
  EXPECT_EQ(found->tick, 960U);
}

// 301 frames are 320 ticks here.
bool HasAFrame(TickIndex tick) {
  return std::lround((tick + 1) * 301 / 320.0) > std::lround(tick * 301 / 320.0);
}

TEST(ShortTicks, BetweenHalfAFrameAndOneOnlyAStopMayLackItsFrame) {
  const auto song = SongWithTempos({{0, 301'000}}, 15'360, {61'440, 0, 0});
  EXPECT_FALSE(FindShortTick(song, NoCues(), kRate));
  int without = 0;
  for (TickIndex tick = 1; tick <= 100; ++tick) {
    const bool canStop = HasAFrame(tick) && HasAFrame(tick - 1) && (tick == 1 || HasAFrame(tick - 2));
    const auto found = FindShortTick(song, CaesuraAt(tick), kRate);
    ASSERT_EQ(!found, canStop) << tick;
    if (!found) continue;
    ++without;
    EXPECT_EQ(found->kind, ShortTick::Kind::StopWithoutFrame);
    EXPECT_EQ(found->tick, tick);
    EXPECT_EQ(found->stop, "the caesura");
    EXPECT_EQ(found->line, 7);
  }
  EXPECT_EQ(without, 18) << "six of a hundred ticks, and the two behind each";
}

TEST(ShortTicks, TheEndIsAStopToo) {
  for (TickIndex tick = 61'440; tick < 61'540; ++tick) {
    const auto found = FindShortTick(SongWithTempos({{0, 301'000}}, 15'360, {tick, 0, 0}), NoCues(), kRate);
    ASSERT_EQ(!found, HasAFrame(tick)) << tick;
    EXPECT_EQ(found ? found->stop : "the end of the song", "the end of the song");
  }
}

TEST(ShortTicks, ATempoSoShortThatNoFrameFallsIntoItIsPassedOver) {
  const std::vector<TempoAt> tempos{{0, 500'000}, {960, 1}, {970, 500'000}};
  const auto song = SongWithTempos(tempos, 480, {1920, 0, 0});
  EXPECT_FALSE(FindShortTick(song, NoCues(), kRate));
  EXPECT_TRUE(FindShortTick(song, CaesuraAt(965), kRate));
  EXPECT_FALSE(FindShortTick(song, CaesuraAt(972), kRate));
}

TEST(ShortTicks, ATempoAtTheVeryEndIsSeenByTheLastReads) {
  const auto song = SongWithTempos({{0, 500'000}, {1920, 1}}, 480, {1920, 0, 0});
  const auto found = FindShortTick(song, NoCues(), kRate);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->tick, 1920U);
}

// Everywhere a read may begin or look ahead to, the conversion answers; where it may end, it answers with
// that very tick.
bool CanBePlayed(const tesk_midi::SongData& song, const CL::SongLog& log, double rate) {
  SamplesTicksConverter converter;
  converter.SetData(song, 0);
  converter.SetSampleRate(static_cast<long double>(rate));
  const TickIndex end = song.GetTimeline().GetMidiEndTicks();
  const auto isItself = [&](TickIndex tick) {
    return converter.SamplesToTicksInteger(converter.TicksToSamples(tick)) == tick;
  };
  try {
    const SampleCount behind = converter.TicksToSamples(end) + static_cast<SampleCount>(rate);
    for (SampleCount frame = 0; frame < behind; ++frame) converter.SamplesToTicksInteger(frame);
    for (const CL::Caesura& caesura : log.caesuras) {
      const TickIndex stop = caesura.abs_time();
      for (TickIndex tick = stop < 2 ? 0 : stop - 2; stop > 0 && tick <= stop; ++tick) {
        if (!isItself(tick)) return false;
      }
    }
    return isItself(end);
  } catch (const exc::ExAssertionError&) {
    return false;
  }
}

TEST(ShortTicks, TheVerdictIsThatOfTheEngineForAnySong) {
  std::mt19937 random(20);
  const auto between = [&](unsigned low, unsigned high) {
    return std::uniform_int_distribution<unsigned>(low, high)(random);
  };
  int played = 0;
  int playedShort = 0;
  int refused = 0;
  for (int round = 0; round < 300; ++round) {
    const double rate = std::vector<double>{8000, 44'100, 48'000, 96'000}[between(0, 3)];
    const auto ppq = static_cast<unsigned short>(between(0, 3) == 0 ? 32'767 : between(480, 32'767));
    // Around half a frame and one a tick, and now and then anything.
    const double frame = 1e6 * ppq / rate;
    std::vector<TempoAt> tempos;
    TickIndex tick = 0;
    bool isShort = false;
    for (unsigned count = between(1, 4); count > 0; --count) {
      const double share = std::vector<double>{0.5, 1.0, between(1, 150) / 100.0, 2.0}[between(0, 3)];
      const auto tempo = static_cast<unsigned>(std::clamp(frame * share + between(0, 4) - 2.0, 1.0, 16e6));
      tempos.push_back({tick, between(0, 19) == 0 ? between(1, 50) : tempo});
      isShort = isShort || tempos.back().microsecondsPerQuarter < frame;
      tick += between(0, 9) == 0 ? between(1, 30) : between(1, 2000);
    }
    const auto song = SongWithTempos(tempos, ppq, {tick, 0, 0});
    const CL::SongLog log = between(0, 2) == 0 ? NoCues() : CaesuraAt(between(0, tick));
    const bool canBePlayed = CanBePlayed(song, log, rate);
    ASSERT_EQ(!FindShortTick(song, log, rate), canBePlayed)
        << "round " << round << ", ppq " << ppq << ", rate " << rate;
    ++(canBePlayed ? played : refused);
    playedShort += canBePlayed && isShort;
  }
  EXPECT_GT(played, 30);
  EXPECT_GT(playedShort, 10);
  EXPECT_GT(refused, 30);
}

}  // namespace
}  // namespace orbel::host
