// How late a performer may decide, and how soon playback goes on: measured by a clock that the test turns.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/reference_suite/audio/support/offline_run.h"
#include "tests/reference_suite/audio/support/stepped_run.h"

namespace {

constexpr long long kMillisecond = 48;
constexpr long long kAhead = 15 * kMillisecond;

class LastMoment : public testing::TestWithParam<unsigned> {};

// A song whose vamp ends `phase` frames into a period of the device.
struct VampRun : SteppedRun {
  VampRun(unsigned period, long long endOfVamp)
      : SteppedRun(Songs{{.frames = 1'000'000, .jumps = {{endOfVamp, {0}}}}}, period) {
    player.RewindAndRefill();
    Play();
    while (SoundsAt(ScriptedPlayer::Sample(0)) < 0) Step(16);
    endIsHeardAt = SoundsAt(ScriptedPlayer::Sample(0)) + endOfVamp;
  }
  long long endIsHeardAt = 0;
};

long long EndOfVamp(unsigned period, long long phase) {
  return 4 * std::max<long long>(period, 512) + phase;
}

// From when on go comes too late for such a vamp: frames before its end is heard.
long long TooLateFrom(unsigned period, long long phase) {
  const long long end = EndOfVamp(period, phase);
  VampRun run(period, end);
  run.StepUntil(run.endIsHeardAt - 2 * (kAhead + period));
  EXPECT_LE(run.player.GetSampleIndex(), end);
  EXPECT_LE(run.player.Planned(), end);
  while (run.player.Planned() <= end) run.Step();
  EXPECT_EQ(run.output->GetUnderrunFrames(), 0);
  return run.endIsHeardAt - run.Now();
}

// Whether a vamp is left by a go that comes `lead` frames before its end is heard.
bool IsLeft(unsigned period, long long phase, long long lead) {
  const long long end = EndOfVamp(period, phase);
  VampRun run(period, end);
  run.StepUntil(run.endIsHeardAt - lead);
  run.player.go = true;
  run.StepUntil(run.endIsHeardAt + period);
  const auto next = run.Heard().at(static_cast<std::size_t>(run.endIsHeardAt));
  EXPECT_TRUE(next == ScriptedPlayer::Sample(end) || next == ScriptedPlayer::Sample(0)) << next;
  return next == ScriptedPlayer::Sample(end);
}

TEST_P(LastMoment, GoLeavesAVampUntilAheadAndAPeriodBeforeItsEndIsHeard) {
  const unsigned period = GetParam();
  long long latest = 0;
  long long earliest = 1'000'000;
  for (long long part = 0; part < 4; ++part) {
    const long long lead = TooLateFrom(period, part * period / 4 + part);
    latest = std::max(latest, lead);
    earliest = std::min(earliest, lead);
  }
  RecordProperty("TooLateFromAtLeast", static_cast<int>(earliest));
  RecordProperty("TooLateFromAtMost", static_cast<int>(latest));
  std::printf("period %u: go is too late from %.1f to %.1f ms before the end\n", period,
              static_cast<double>(earliest) / kMillisecond, static_cast<double>(latest) / kMillisecond);
  EXPECT_LE(latest, kAhead + period + kMillisecond);
  EXPECT_GT(earliest, kMillisecond) << "what the device has taken cannot be taken back";
  EXPECT_TRUE(IsLeft(period, 3, kAhead + period + kMillisecond));
  EXPECT_FALSE(IsLeft(period, 3, kMillisecond)) << "too late is too late";
}

TEST_P(LastMoment, ACaesuraIsHeardToItsEndAndGoSoundsWithinAheadAPeriodAndFiveMilliseconds) {
  const unsigned period = GetParam();
  constexpr long long kCaesura = 3'011;
  for (long long part = 0; part < 4; ++part) {
    SteppedRun run(Songs{{.frames = 1'000'000, .caesuras = {kCaesura}}}, period);
    run.player.RewindAndRefill();
    run.Play();
    while (!run.player.Waits()) run.Step(64);
    // However long the wait.
    const long long go = run.Now() + 100 * kMillisecond + part * period / 4;
    run.StepUntil(go);
    std::vector<float> heard = run.Heard();
    std::erase(heard, 0.0F);
    ASSERT_EQ(heard, Frames(0, kCaesura)) << "to the last frame, and nothing of what follows";
    const long long pressed = run.Now();
    run.Play();
    while (run.SoundsAt(ScriptedPlayer::Sample(kCaesura)) < 0) {
      ASSERT_LT(run.Now() - pressed, 10 * (kAhead + period));
      run.Step();
    }
    EXPECT_LE(run.SoundsAt(ScriptedPlayer::Sample(kCaesura)) - pressed, kAhead + period + 5 * kMillisecond);
    run.StepUntil(run.Now() + 3 * period);
    EXPECT_EQ(run.output->GetUnderrunFrames(), 0);
  }
}

// How long after a performer's change the first frame sounds that is another than without it.
template <typename Change>
long long HeardAfter(unsigned period, long long phase, Change change) {
  SteppedRun run(Songs{{.frames = 1'000'000}}, period);
  run.player.RewindAndRefill();
  run.Play();
  while (run.SoundsAt(ScriptedPlayer::Sample(0)) < 0) run.Step(16);
  const long long start = run.SoundsAt(ScriptedPlayer::Sample(0));
  run.StepUntil(4 * std::max<long long>(period, 512) + phase);
  const long long pressed = run.Now();
  change(run.player);
  long long at = start;
  for (; at < pressed + 3 * (kAhead + period); ++at) {
    while (static_cast<long long>(run.Heard().size()) <= at) run.Step();
    if (run.Heard()[static_cast<std::size_t>(at)] != ScriptedPlayer::Sample(at - start)) break;
  }
  EXPECT_EQ(run.output->GetUnderrunFrames(), 0);
  return at - pressed;
}

// It acts where the next read begins: of those that wait for the device the last one may be there already.
TEST_P(LastMoment, AnotherTempoOrKeyIsHeardWithinAheadAReadAndAPeriod) {
  constexpr long long kRead = 264;
  const unsigned period = GetParam();
  for (const long long phase : {0LL, period / 2LL}) {
    const long long tempo = HeardAfter(period, phase, [](ScriptedPlayer& player) { player.liveScale = 0.8; });
    const long long key = HeardAfter(period, phase, [](ScriptedPlayer& player) { player.liveSemitones = 2; });
    std::printf("period %u: another tempo is heard after %.1f ms, another key after %.1f ms\n", period,
                static_cast<double>(tempo) / kMillisecond, static_cast<double>(key) / kMillisecond);
    EXPECT_LE(tempo, kAhead + kRead + period);
    EXPECT_LE(key, kAhead + kRead + period);
    EXPECT_GT(std::min(tempo, key), kMillisecond) << "what the device has taken cannot be taken back";
  }
}

// A server that runs without a clock, as fast as its clients are.
TEST(LastMomentWithoutAClock, ADeviceThatWaitsIsGivenItsPeriodWithoutDelay) {
  constexpr long long kPeriod = 1'024;
  SteppedRun run(Songs{{.frames = 1'000'000}}, kPeriod);
  run.player.RewindAndRefill();
  run.Play();
  run.StepUntil(kPeriod);
  ASSERT_LT(run.player.Planned(), 2 * kPeriod) << "what sounds in more than a period can still change";
  EXPECT_FALSE(run.Device().IsReady(kPeriod));
  EXPECT_TRUE(Await([&] { return run.Device().IsReady(kPeriod); })) << "although no time has passed";
}

INSTANTIATE_TEST_SUITE_P(Periods, LastMoment, testing::Values(64U, 128U, 256U, 512U, 1024U));

}  // namespace
