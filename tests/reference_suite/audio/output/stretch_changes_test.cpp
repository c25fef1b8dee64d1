// When another tempo or key acts where a device waits for what is rendered.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "reference_suite/audio/output/render_step.h"
#include "tests/reference_suite/audio/support/audible_run.h"
#include "tests/reference_suite/audio/support/counting_player.h"
#include "tests/reference_suite/audio/support/open_gate.h"

namespace {

using tesk_audio::StepOutcome;
using tesk_audio::StepResult;
using tesk_audio::StretchFactors;
using tesk_audio::StretchPace;
using tesk_audio::StretchQuality;

constexpr long long kFrames = 100'000;
constexpr unsigned kChannels = 2;
constexpr double kRead = 264.0;

// Renders for a device, a step at a time, and counts the most chunks that a step takes for what a read
// becomes at the recorded tempo.
struct RunInTime {
  RunInTime(Songs songs, StretchQuality quality, StretchPace pace = StretchPace::InTime)
      : player(std::move(songs), kChannels), step(player, kChannels, 48000.0, 5.0, quality, pace) {}

  bool Step() {
    player.chunks = 0;
    result = step.Run(gate);
    if (result.outcome != StepOutcome::Frames) return false;
    const auto frames = static_cast<double>(result.deviceFrames);
    most = std::max(most, player.chunks * kRead / std::max(kRead, frames));
    for (std::size_t i = 0; i < result.deviceFrames; ++i) heard.push_back(step.Frames()[i * kChannels]);
    return true;
  }
  // To a song frame, or to where it does not run any more.
  void StepTo(long long frame) {
    while (result.sampleIndex + result.frames < frame && Step()) {
    }
  }
  // From now on; both at once, as a performer's keys do it.
  void Change(const StretchFactors& factors) {
    player.liveScale = factors.scale;
    player.liveSemitones = factors.semitones;
    most = 0.0;
  }
  // Steps until as many device frames come out as the scale says. The song frame where that begins.
  long long StepUntilPlayedAt(double scale, long long patience) {
    const long long until = result.sampleIndex + patience;
    while (Step() && result.sampleIndex < until) {
      const double expected = static_cast<double>(result.frames) / scale;
      if (std::abs(static_cast<double>(result.deviceFrames) - expected) <= 1.0) break;
    }
    return result.sampleIndex;
  }

  CountingPlayer player;
  tesk_audio::RenderStep step;
  OpenGate gate;
  StepResult result;
  std::vector<float> heard;
  double most = 0.0;
};

Songs Chord() {
  return {{.frames = kFrames, .sound = Tones({110.0, 220.5, 331.0, 1'000.0}, 0.1, kFrames)}};
}

// Where everything at once is more than what waits for the device lasts.
const std::vector<StretchFactors> kHeavy{{0.5, 0}, {1.1, 0}, {1.5, 0},   {2.0, 0},  {4.0, 0},
                                         {1.0, 2}, {1.0, 7}, {1.0, -12}, {0.9, -24}};

// The most chunks in a step, first from the recorded tempo and key, then to others.
std::pair<double, double> ChunksOf(const StretchFactors& factors, StretchPace pace) {
  RunInTime run(Chord(), StretchQuality::Finer, pace);
  run.StepTo(20'000);
  run.Change(factors);
  run.StepTo(40'000);
  const double entering = run.most;
  run.Change({0.8, 1});
  run.StepTo(60'000);
  return {entering, run.most};
}

TEST(StretchChange, OfThePerformerIsPreparedLittleByLittle) {
  for (const StretchFactors& factors : kHeavy) {
    const auto [entering, changing] = ChunksOf(factors, StretchPace::InTime);
    const auto [enteringAtOnce, changingAtOnce] = ChunksOf(factors, StretchPace::AtLeisure);
    EXPECT_LE(1.5 * entering, enteringAtOnce) << factors.scale << ", " << factors.semitones;
    EXPECT_LE(1.5 * changing, changingAtOnce) << factors.scale << ", " << factors.semitones;
  }
}

TEST(StretchChange, OfThePerformerActsSoon) {
  for (const double scale : {0.5, 0.9, 1.1, 2.0, 4.0}) {
    RunInTime finer(Chord(), StretchQuality::Finer);
    finer.StepTo(20'000);
    finer.Change({scale, 0});
    const long long asked = finer.result.sampleIndex;
    EXPECT_LE(finer.StepUntilPlayedAt(scale, 10'000) - asked, 2'400 + 528) << scale;
  }
  // The faster engine is there at once.
  RunInTime faster(Chord(), StretchQuality::Faster);
  faster.StepTo(20'000);
  faster.Change({1.1, 0});
  faster.Step();
  EXPECT_EQ(faster.result.deviceFrames, 240U);
}

TEST(StretchChange, IsHeardInItsKey) {
  RunInTime run({{.frames = kFrames, .sound = Tones({440.0}, 0.5, kFrames)}}, StretchQuality::Finer);
  run.StepTo(20'000);
  run.Change({1.0, -12});
  run.StepTo(kFrames);
  EXPECT_NEAR(PitchNear(run.heard, 24'800, 20'000, 220.0), 220.0, 0.2);
  const double steady = LargestStep(run.heard, 0, 19'000);
  EXPECT_LE(LargestStep(run.heard, 19'000, 26'000), 1.05 * steady);
}

TEST(StretchChange, ThatIsTakenBackBeforeItActsIsNotHeard) {
  RunInTime run(Chord(), StretchQuality::Finer);
  run.StepTo(20'000);
  run.Change({1.0, 5});
  run.Step();
  run.Step();
  run.Change({1.0, 0});
  run.StepTo(kFrames);
  const auto sound = Tones({110.0, 220.5, 331.0, 1'000.0}, 0.1, kFrames);
  EXPECT_TRUE(run.heard == *sound);
}

// What is made ready is what was asked for first; then comes the rest.
TEST(StretchChange, ThatChangesOnTheWayEndsWhereItWasLeft) {
  RunInTime run(Chord(), StretchQuality::Finer);
  run.StepTo(20'000);
  for (const double scale : {1.5, 1.6, 1.7, 0.7, 0.75}) {
    run.Change({scale, 0});
    run.Step();
  }
  EXPECT_LE(run.StepUntilPlayedAt(0.75, 20'000), 20'000 + 9'600);
  EXPECT_LE(run.most, 12);
}

// Like the ticking of a clock: what plays begins anew for each, and the change must not wait for the last.
TEST(StretchChange, DoesNotWaitForEver) {
  std::vector<long long> ticks;
  for (long long at = 1'000; at < kFrames; at += 700) ticks.push_back(at);
  for (const StretchQuality quality : {StretchQuality::Faster, StretchQuality::Finer}) {
    RunInTime run({{.frames = kFrames, .sound = Clicks(ticks, kFrames)}}, quality);
    run.Change({0.6, 0});
    run.StepTo(20'000);
    run.Change({4.0, 0});
    EXPECT_LE(run.StepUntilPlayedAt(4.0, 40'000), 20'000 + 9'600 + 2'400);
  }
}

// Begun right before an attack, it would have to begin anew at once.
TEST(StretchChange, IsHeardWithAnAttackRatherThanRightBeforeIt) {
  for (long long asked = 17'600; asked < 20'400; asked += 264) {
    RunInTime run({{.frames = kFrames, .sound = Clicks({20'000}, kFrames)}}, StretchQuality::Finer);
    run.Change({1.0, 7});
    run.StepTo(asked);
    run.Change({1.0, -12});
    run.StepTo(30'000);
    EXPECT_LE(run.most, 14.0) << asked;
  }
}

TEST(StretchChange, AJumpDoesNotWaitForIt) {
  RunInTime run({{.frames = kFrames,
                  .jumps = {{20'000, {50'000}}},
                  .sound = Tones({110.0, 220.5, 331.0, 1'000.0}, 0.1, kFrames)}},
                StretchQuality::Finer);
  run.StepTo(19'900 - 264);
  run.Change({1.5, 0});
  while (run.Step() && !run.result.jumped) {
  }
  EXPECT_EQ(run.result.sampleIndex, 50'000);
  EXPECT_EQ(run.result.deviceFrames, 176U);
}

// What is written acts where it stands, prepared or not, as in a file.
TEST(StretchChange, ThatIsWrittenIsPreparedBeforeItsPlace) {
  for (const StretchFactors& factors : kHeavy) {
    Songs songs = Chord();
    songs[0].scales = {{40'011, factors.scale}};
    songs[0].transpositions = {{40'011, factors.semitones}};
    RunInTime run(songs, StretchQuality::Finer);
    run.StepTo(60'000);
    EXPECT_LE(run.most, 12) << factors.scale << ", " << factors.semitones;
  }
}

TEST(StretchChange, ThatIsWrittenIsHeardWhereAFileHasIt) {
  std::mt19937 random(17);
  const std::vector<long double> scales{0.5L, 0.8L, 1.0L, 1.0L, 1.1L, 1.5L, 2.0L};
  std::vector<long long> clicks;
  for (long long at = 3'000; at < kFrames - 3'000; at += 2'000 + static_cast<long long>(random() % 4'000))
    clicks.push_back(at);
  for (int song = 0; song < 6; ++song) {
    Songs songs{{.frames = kFrames, .sound = Clicks(clicks, kFrames)}};
    if (song % 3 == 2) songs[0].jumps = {{60'000, {30'000}}};
    for (long long at = 5'000; at < kFrames - 5'000; at += 500 + static_cast<long long>(random() % 15'000)) {
      songs[0].scales[at] = scales[random() % scales.size()];
      songs[0].transpositions[at] = random() % 2 == 0 ? 0 : static_cast<int>(random() % 15) - 7;
    }
    const StretchQuality quality = song % 2 == 0 ? StretchQuality::Finer : StretchQuality::Faster;
    RunInTime run(songs, quality);
    run.StepTo(kFrames);
    AudibleRun file(songs, 5.0, 0.0, 48000.0, 1, quality);
    file.Play();
    ASSERT_EQ(run.heard.size(), file.heard.size());
    for (const long long click : clicks) {
      for (const double place : file.PlacesOf(click)) {
        EXPECT_NEAR(LoudestNear(run.heard, place, 240), LoudestNear(file.heard, place, 240), 1.0)
            << song << ", " << click;
      }
    }
  }
}

}  // namespace
