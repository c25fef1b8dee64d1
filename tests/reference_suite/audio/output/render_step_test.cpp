// What one render step asks, reads and mixes.
#include "reference_suite/audio/output/render_step.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <thread>

#include "tests/reference_suite/audio/support/offline_run.h"
#include "tests/support/allocation_watch.h"

namespace {

using tesk_audio::RenderStep;
using tesk_audio::StepOutcome;
using tesk_audio::StepResult;

class Gate : public tesk_audio::StepGate {
 public:
  bool MayStep() override { return open; }
  bool open = true;
};

TEST(RenderStep, TheQuantumSpansMoreThanTwoTicksAtEveryRate) {
  ScriptedPlayer player(Songs{{}});
  EXPECT_EQ(RenderStep(player, 1, 8000.0, 0.0).GetQuantum(), 256U);
  EXPECT_EQ(RenderStep(player, 1, 44100.0, 0.0).GetQuantum(), 256U);
  EXPECT_EQ(RenderStep(player, 1, 46545.0, 0.0).GetQuantum(), 256U);
  EXPECT_EQ(RenderStep(player, 1, 46546.0, 0.0).GetQuantum(), 257U);
  EXPECT_EQ(RenderStep(player, 1, 48000.0, 0.0).GetQuantum(), 264U);
  EXPECT_EQ(RenderStep(player, 1, 96000.0, 0.0).GetQuantum(), 528U);
}

TEST(RenderStep, ReadsExactlyWhatIsPlanned) {
  ScriptedPlayer player(Songs{{.frames = 600}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  for (const auto& [from, count] : {std::pair(0, 264), std::pair(264, 264), std::pair(528, 72)}) {
    const StepResult result = step.Run(gate);
    EXPECT_EQ(result.outcome, StepOutcome::Frames);
    EXPECT_EQ(result.sampleIndex, from);
    EXPECT_EQ(result.frames, count);
    EXPECT_FALSE(result.jumped);
    EXPECT_FALSE(result.moved);
    EXPECT_EQ(std::vector<float>(step.Frames(), step.Frames() + count), Frames(from, from + count));
  }
  const StepResult end = step.Run(gate);
  EXPECT_EQ(end.outcome, StepOutcome::End);
  EXPECT_EQ(end.sampleIndex, 600);
  EXPECT_EQ(end.frames, 0);
}

TEST(RenderStep, AShutGatePlansNothing) {
  ScriptedPlayer player(Songs{{}});
  player.onPlan = [] { FAIL() << "planned"; };
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  gate.open = false;
  EXPECT_EQ(step.Run(gate).outcome, StepOutcome::Refused);
}

TEST(RenderStep, HoldsTheReadSamplesLockForTheWholeStepAndNoLonger) {
  ScriptedPlayer player(Songs{{}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  bool heldInPlan = false;
  const auto isHeldByAnother = [&player] {
    bool isFree = false;
    std::thread([&] {
      exc::ExLock& lock = player.GetReadSamplesLock();
      if (lock.TryLock()) {
        isFree = true;
        lock.Unlock();
      }
    }).join();
    return !isFree;
  };
  player.onPlan = [&] { heldInPlan = isHeldByAnother(); };
  step.Run(gate);
  EXPECT_TRUE(heldInPlan);
  EXPECT_FALSE(isHeldByAnother());
  player.onPlan = [] { throw std::logic_error("broken"); };
  EXPECT_THROW(step.Run(gate), std::logic_error);
  EXPECT_FALSE(isHeldByAnother()) << "after a step that threw";
}

TEST(RenderStep, TellsACaesuraFromTheEnd) {
  ScriptedPlayer player(Songs{{.frames = 100, .caesuras = {0}}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  EXPECT_EQ(step.Run(gate).outcome, StepOutcome::Caesura);
}

TEST(RenderStep, AudioShorterThanTheSongIsFollowedBySilenceAndTheSongRunsOn) {
  ScriptedPlayer player(Songs{{.frames = 600, .audioFrames = 300}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  step.Run(gate);
  const StepResult result = step.Run(gate);
  EXPECT_EQ(result.frames, 264);
  std::vector<float> expected = Frames(264, 300);
  expected.resize(264, 0.0F);
  EXPECT_EQ(std::vector<float>(step.Frames(), step.Frames() + 264), expected);
  EXPECT_EQ(player.GetSampleIndex(), 528);
  EXPECT_EQ(step.Run(gate).frames, 72);
  EXPECT_EQ(step.Run(gate).outcome, StepOutcome::End);
}

class RenderStepJumps : public testing::TestWithParam<bool> {};

TEST_P(RenderStepJumps, AnnouncedOrNotAJumpIsNoticed) {
  ScriptedPlayer player(Songs{{.frames = 2000, .jumps = {{264, {1000}}}, .announcesJumps = GetParam()}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  EXPECT_FALSE(step.Run(gate).jumped);
  const StepResult result = step.Run(gate);
  EXPECT_TRUE(result.jumped);
  EXPECT_EQ(result.jumpFrom, 264);
  EXPECT_EQ(result.jumpTo, 1000);
  EXPECT_EQ(result.sampleIndex, 1000);
  EXPECT_FALSE(result.moved) << "a jump is no seek";
  EXPECT_EQ(std::vector<float>(step.Frames(), step.Frames() + 264), Frames(1000, 1264));
}

INSTANTIATE_TEST_SUITE_P(Announced, RenderStepJumps, testing::Bool());

TEST(RenderStep, AJumpThatLandsOnACaesuraIsToldWithIt) {
  ScriptedPlayer player(Songs{{.frames = 2000, .caesuras = {1000}, .jumps = {{264, {1000}}}}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  step.Run(gate);
  const StepResult result = step.Run(gate);
  EXPECT_EQ(result.outcome, StepOutcome::Caesura);
  EXPECT_TRUE(result.jumped);
  EXPECT_EQ(result.jumpFrom, 264);
  EXPECT_EQ(result.jumpTo, 1000);
}

TEST(RenderStep, ASeekIsNoticedOnceAndAnAttaccaNotAtAll) {
  ScriptedPlayer player(Songs{{.frames = 5000}});
  RenderStep step(player, 1, 48000.0, 5.0);
  Gate gate;
  step.Run(gate);
  player.AddToSampleIndex(1000);
  EXPECT_TRUE(step.PositionHasMoved());
  const StepResult result = step.Run(gate);
  EXPECT_TRUE(result.moved);
  EXPECT_FALSE(result.jumped);
  EXPECT_EQ(step.Frames()[0], ScriptedPlayer::Sample(1264)) << "a seek is not cross-faded";
  EXPECT_FALSE(step.PositionHasMoved());
  EXPECT_FALSE(step.Run(gate).moved);
  player.AddToSampleIndex(1000);
  step.ForgetPosition();
  EXPECT_FALSE(step.PositionHasMoved());
  EXPECT_FALSE(step.Run(gate).moved);
}

// What a cross-fade of the two sources must give, frame by frame.
float Mixed(float in, float out, long long frame, double length) {
  const double angle = M_PI / 2.0 * (static_cast<double>(frame) + 0.5) / length;
  return static_cast<float>(in * static_cast<float>(std::sin(angle)) +
                            out * static_cast<float>(std::cos(angle)));
}

TEST(RenderStep, AfterAJumpTheOldFramesFadeOutUnderTheNewAtEqualPower) {
  OfflineRun run(Songs{{.frames = 5000, .jumps = {{264, {3000}}}}}, 5.0);  // 240 frames
  run.Start();
  run.Step();
  run.Step();
  std::vector<float> expected = Frames(0, 264);
  for (long long frame = 0; frame < 240; ++frame) {
    expected.push_back(
        Mixed(ScriptedPlayer::Sample(3000 + frame), ScriptedPlayer::Sample(264 + frame), frame, 240));
  }
  AppendFrames(&expected, 3240, 3264);
  EXPECT_EQ(run.heard, expected);
}

TEST(RenderStep, ACrossFadeGoesOnThroughShortReads) {
  OfflineRun whole(Songs{{.frames = 5000, .jumps = {{264, {3000}}}}}, 5.0);
  whole.Start();
  whole.Run();
  OfflineRun cut(
      {{.frames = 5000, .jumps = {{264, {3000}}}, .scales = {{3007, 1.0L}, {3100, 1.0L}, {3101, 1.0L}}}},
      5.0);
  cut.Start();
  cut.Run();
  EXPECT_EQ(cut.heard, whole.heard);
}

TEST(RenderStep, AJumpWithinACrossFadeCutsNothingOff) {
  // From 264 to 3000, and 50 frames later from 3050 to 1000.
  OfflineRun run(Songs{{.frames = 5000, .jumps = {{264, {3000}}, {3050, {1000}}}}}, 5.0);
  run.Start();
  run.Step();
  run.Step();
  run.Step();
  std::vector<float> expected = Frames(0, 264);
  const auto first = [](long long frame) {
    return frame < 240
               ? Mixed(ScriptedPlayer::Sample(3000 + frame), ScriptedPlayer::Sample(264 + frame), frame, 240)
               : ScriptedPlayer::Sample(3000 + frame);
  };
  for (long long frame = 0; frame < 50; ++frame) expected.push_back(first(frame));
  for (long long frame = 0; frame < 240; ++frame) {
    expected.push_back(Mixed(ScriptedPlayer::Sample(1000 + frame), first(50 + frame), frame, 240));
  }
  AppendFrames(&expected, 1240, 1264);
  EXPECT_EQ(run.heard, expected);
}

TEST(RenderStep, WhereTheOldAudioHasEndedSilenceFadesOut) {
  OfflineRun run(Songs{{.frames = 5000, .audioFrames = 300, .jumps = {{264, {10}}}}}, 5.0);
  run.Start();
  run.Step();
  run.Step();
  for (long long frame = 0; frame < 240; ++frame) {
    const float out = frame < 36 ? ScriptedPlayer::Sample(264 + frame) : 0.0F;
    ASSERT_EQ(run.heard[static_cast<std::size_t>(264 + frame)],
              Mixed(ScriptedPlayer::Sample(10 + frame), out, frame, 240))
        << frame;
  }
}

TEST(RenderStep, WithoutCrossFadeAJumpIsASpliceToTheBit) {
  OfflineRun run(Songs{{.frames = 1000, .jumps = {{500, {100, 100}}}}}, 0.0);
  run.Start();
  run.Run();
  std::vector<float> expected = Frames(0, 500);
  AppendFrames(&expected, 100, 500);
  AppendFrames(&expected, 100, 1000);
  EXPECT_EQ(run.heard, expected);
}

TEST(RenderStep, AllocatesNothing) {
  ScriptedPlayer player(Songs{{.frames = 100'000, .jumps = {{528, {2000}}, {2100, {3000}}}}}, 2);
  RenderStep step(player, 2, 48000.0, 5.0);
  Gate gate;
  // The scripted player notes each jump in a map the first time.
  for (int i = 0; i < 6; ++i) step.Run(gate);
  player.AddToSampleIndex(-player.GetSampleIndex());
  const test_support::AllocationWatch watch;
  bool jumped = false;
  for (int i = 0; i < 50; ++i) jumped = step.Run(gate).jumped || jumped;
  EXPECT_EQ(watch.Count(), 0);
}

TEST(RenderStep, TellsWhatWasInForceAndWhatItBecame) {
  ScriptedPlayer player(Songs{{.frames = 5000, .scales = {{264, 0.8L}}, .transpositions = {{528, 5}}}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  EXPECT_EQ(step.Run(gate).deviceFrames, 264U);
  StepResult result = step.Run(gate);
  EXPECT_EQ(result.frames, 264);
  EXPECT_EQ(result.deviceFrames, 330U);
  EXPECT_EQ(result.factors.scale, 0.8);
  EXPECT_EQ(result.factors.semitones, 0);
  result = step.Run(gate);
  EXPECT_EQ(result.factors.semitones, 5);
}

TEST(RenderStep, NeverGivesMoreFramesThanItSays) {
  ScriptedPlayer player(Songs{{.frames = 50'000, .scales = {{0, 0.25L}}}});
  RenderStep step(player, 1, 48000.0, 0.0);
  Gate gate;
  EXPECT_GE(step.GetMostFrames(), 4 * step.GetQuantum());
  std::size_t most = 0;
  for (int i = 0; i < 100; ++i) most = std::max(most, step.Run(gate).deviceFrames);
  EXPECT_EQ(most, 4 * step.GetQuantum());
}

}  // namespace
