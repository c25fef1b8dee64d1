// The live output: a real render thread, and a device that is turned by hand or spins freely.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

#include "exc/flag/ex_scope_flag.h"
#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/barrier.h"
#include "tests/reference_suite/audio/support/live_run.h"
#include "tests/reference_suite/audio/support/logged_exceptions.h"
#include "tests/reference_suite/audio/support/offline_run.h"
#include "tests/support/cout_capture.h"
#include "tests/support/limit.h"
#include "tests/support/no_threads.h"
#include "tests/support/nobody.h"
#include "tests/support/staircase_content.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::StaircaseContent;

TEST(LiveOutput, PlaysTheSongFrameForFrame) {
  LiveRun run(Songs{{.frames = 20'011}});
  run.Start();
  EXPECT_TRUE(run.output->GetOutputIsRunning());
  run.device->Spin(true);
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.device->Heard(), Frames(0, 20'011));
  EXPECT_EQ(run.player.Log(), "stopped\n");
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 20'011);
}

TEST(LiveOutput, LiveAndOfflineSoundTheSame) {
  const Songs songs{{.frames = 20'000,
                     .audioFrames = 15'000,
                     .caesuras = {7'000},
                     .jumps = {{5'000, {1'000, 1'000}}, {9'000, {12'000}}, {12'050, {11'000}}},
                     .isAttacca = true},
                    {.frames = 3'000}};
  OfflineRun offline(songs, 5.0);
  offline.player.goesOnAtCaesura = true;
  offline.Start();
  offline.Run();
  LiveRun live(songs, 5.0);
  live.player.goesOnAtCaesura = true;
  live.device->Spin(true);
  live.Start();
  ASSERT_TRUE(live.HasStopped());
  std::erase(offline.heard, 0.0F);
  EXPECT_EQ(live.device->Heard(), offline.heard);
  EXPECT_EQ(live.player.Log(), offline.player.Log());
}

TEST(LiveOutput, RefillRendersAheadAndCountsFromZero) {
  LiveRun run(Songs{{}});
  run.device->Spin(true);
  run.player.RewindAndRefill();
  EXPECT_EQ(run.player.Planned(), 3 * 264) << "the reads that 15 ms need, when Refill returns";
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 0);
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  run.player.RewindAndRefill();
  EXPECT_EQ(run.player.Planned(), 3 * 264);
  EXPECT_EQ(run.device->HeardCount(), 0U);
}

TEST(LiveOutput, StartWithAnEmptyRingRendersFirst) {
  LiveRun run(Songs{{.frames = 3'000}});
  run.player.SetPlays(true);
  run.output->Start();
  ASSERT_TRUE(run.HasPlanned(720));
  run.device->Spin(true);
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.device->Heard(), Frames(0, 3'000));
}

TEST(LiveOutput, TheElapsedCountFollowsTheDeviceLessItsLatency) {
  LiveRun run(Songs{{}});
  run.device->latency = 100;
  run.Start();
  // The first period of a running device can come before the opening.
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 0);
  run.device->Turn(199);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 100);
  run.device->Turn(64);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 164);
}

TEST(LiveOutput, TheEndIsToldWhenTheLastFrameHasLeftTheLoudspeaker) {
  LiveRun run(Songs{{.frames = 500}});
  run.device->latency = 1'000;
  run.Start();
  while (run.device->HeardCount() < 500) run.device->Turn(1);
  for (int silent = 1; silent < 1'000; ++silent) run.device->Turn(1);
  EXPECT_LT(run.output->GetElapsedSampleCount(), 500);
  EXPECT_TRUE(run.output->GetOutputIsRunning());
  EXPECT_EQ(run.player.Log(), "");
  run.device->Turn(2);
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 500);
}

TEST(LiveOutput, PauseKeepsRingAndCountAndStartGoesOnWithTheNextFrame) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  for (int i = 1; i < 10; ++i) {
    ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 4'000U * static_cast<unsigned>(i); }));
    run.Pause();
    EXPECT_FALSE(run.output->GetOutputIsRunning());
    const std::size_t heard = run.device->HeardCount();
    EXPECT_EQ(run.output->GetElapsedSampleCount(), static_cast<long long>(heard));
    run.player.SetPlays(true);
    run.output->Start();
    EXPECT_TRUE(run.output->GetOutputIsRunning());
  }
  run.output->Stop(true);
  EXPECT_EQ(run.device->Heard(), Frames(0, static_cast<long long>(run.device->HeardCount())));
}

TEST(LiveOutput, StopTellsThePlayerOnceOnTheRenderThread) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  std::atomic<bool> elsewhere{false};
  const auto host = std::this_thread::get_id();
  run.player.onStopped = [&] {
    elsewhere = std::this_thread::get_id() != host;
    EXPECT_FALSE(run.output->GetOutputIsRunning());
  };
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "") << "stopped already";
  run.Start();
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "stopped\n") << "when it returns, that has happened";
  EXPECT_TRUE(elsewhere);
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_TRUE(run.output->Stop(false));
  EXPECT_EQ(run.player.Log(), "stopped\n");
}

TEST(LiveOutput, StopFromPauseTellsThePlayerToo) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  run.Pause();
  EXPECT_EQ(run.player.Log(), "");
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "stopped\n");
}

TEST(LiveOutput, StopWithoutWaitingReturnsAtOnce) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.Start();
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  EXPECT_TRUE(run.output->Stop(false)) << "although the device stands still";
  EXPECT_EQ(run.player.Log(), "");
  run.device->Spin(true);
  EXPECT_TRUE(run.HasStopped());
}

TEST(LiveOutput, AfterAStopStartGoesOnWithTheNextFrame) {
  LiveRun run(Songs{{.frames = 10'000}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 1'000; }));
  run.output->Stop(true);
  run.player.SetPlays(true);
  run.output->Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.device->Heard(), Frames(0, 10'000));
}

// The stop has told the player that it stands: only the player's own start lets both agree again.
TEST(LiveOutput, AStartBehindAStopWaitsForItsTurnAndGoesThroughThePlayer) {
  LiveRun run(Songs{{.frames = 10'000}});
  run.Start();
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  run.output->Stop(false);
  run.player.Play();
  EXPECT_EQ(run.player.Log(), "play\n");
  run.device->Spin(true);
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() == 10'000; }));
  ASSERT_TRUE(run.HasLogged("play\nstopped\nplay\nstopped\n")) << run.player.Log();
}

TEST(LiveOutput, APauseBehindAStartBehindAStopLeavesItStopped) {
  LiveRun run(Songs{{.frames = 10'000}});
  run.Start();
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  run.output->Stop(false);
  run.player.Play();
  run.timePasses = true;
  run.output->Pause();
  run.timePasses = false;
  run.device->Spin(true);
  EXPECT_TRUE(run.output->Stop(true)) << "returns once the first stop is done";
  EXPECT_EQ(run.player.Log(), "play\nstopped\n");
  EXPECT_FALSE(run.output->GetOutputIsRunning());
}

TEST(LiveOutput, StopOnTheRenderThreadDoesNotWaitForTheRenderThread) {
  LiveRun run(Songs{{.frames = 10'000, .caesuras = {2'000}}});
  run.device->Spin(true);
  std::atomic<bool> result{false};
  run.player.onCaesura = [&] { result = run.output->Stop(true); };
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_TRUE(result);
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\ncaesura\nstopped\n");
}

TEST(LiveOutput, ADeviceThatDoesNotAnswerMakesStopFailAfterHalfASecond) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.Start();
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  run.timePasses = true;
  const auto before = std::chrono::steady_clock::now();
  EXPECT_FALSE(run.output->Stop(true));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(500));
  EXPECT_EQ(run.player.Log(), "");
  run.timePasses = false;
  run.device->Spin(true);
  EXPECT_TRUE(run.output->Stop(true)) << "once it answers again";
  EXPECT_EQ(run.player.Log(), "stopped\n");
}

TEST(LiveOutput, AMachineThatHasStoodStillIsNoDeviceThatDoesNotAnswer) {
  for (const bool pauses : {false, true}) {
    LiveRun run(Songs{{.frames = kEndless}});
    run.Start();
    while (run.device->Turn(1)[0] == 0.0F) {
    }
    std::future<bool> obeyed = std::async(std::launch::async, [&] {
      if (!pauses) return run.output->Stop(true);
      run.Pause();
      return true;
    });
    const int looks = run.clockLooks;
    ASSERT_TRUE(Await([&] { return run.clockLooks > looks + 3; }));
    run.now = 3'600'000'000'000;
    EXPECT_EQ(obeyed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    run.device->Spin(true);
    EXPECT_TRUE(obeyed.get());
  }
}

TEST(LiveOutput, StopWaitsAsLongAsTheRenderThreadIsInsideThePlayer) {
  LiveRun run(Songs{{.frames = 1'000, .isAttacca = true}, {.frames = kEndless}});
  Barrier loader;
  run.player.onAttacca = [&] { loader.Pass(); };
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return loader.IsReached(); }));
  std::future<bool> stop = std::async(std::launch::async, [&] { return run.output->Stop(true); });
  EXPECT_EQ(stop.wait_for(std::chrono::milliseconds(800)), std::future_status::timeout);
  loader.Open();
  EXPECT_TRUE(stop.get());
  EXPECT_EQ(run.player.Log(), "attacca\nstopped\n");
}

TEST(LiveOutput, ACaesuraPlaysOutBeforeThePlayerIsTold) {
  LiveRun run(Songs{{.frames = 10'000, .caesuras = {4'000}}});
  run.device->Spin(true);
  std::atomic<std::size_t> heard{0};
  std::atomic<bool> runs{true};
  run.player.onCaesura = [&] {
    heard = run.device->HeardCount();
    runs = run.output->GetOutputIsRunning();
  };
  run.Start();
  ASSERT_TRUE(run.Waits());
  EXPECT_EQ(heard, 4'000U);
  EXPECT_FALSE(runs);
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\ncaesura\n");
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 0) << "the player refilled";
  run.player.Play();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.device->Heard(), Frames(0, 10'000));
}

TEST(LiveOutput, ACaesuraInTheFirstFramesOfARefillIsAnnouncedWhenPlaybackStarts) {
  LiveRun run(Songs{{.frames = 10'000, .caesuras = {100}}});
  run.device->Spin(true);
  run.player.RewindAndRefill();
  EXPECT_EQ(run.player.Log(), "") << "nobody plays";
  run.player.Play();
  ASSERT_TRUE(run.Waits());
  EXPECT_EQ(run.device->Heard(), Frames(0, 100));
  EXPECT_EQ(run.player.Log(), "play\napproaching stop\nclear approaching stop\ncaesura\n");
}

TEST(LiveOutput, StopWhileItWaitsAtACaesuraTellsThePlayer) {
  LiveRun run(Songs{{.frames = 10'000, .caesuras = {1'000}}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.Waits());
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\ncaesura\nstopped\n");
}

TEST(LiveOutput, APlayerThatFailsAtACaesuraStops) {
  LiveRun run(Songs{{.frames = 10'000, .caesuras = {1'000}}});
  run.device->Spin(true);
  logged_exceptions::Take();
  run.player.onCaesura = [] { throw std::runtime_error("no caesura"); };
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(logged_exceptions::Take(), "reference_suite/audio/output: no caesura\n");
  EXPECT_FALSE(run.output->GetOutputIsRunning());
}

// Over and over it would be asked, and nothing else be done.
TEST(LiveOutput, APlayerThatFailsAtTheEndOfASongStops) {
  LiveRun run(Songs{{.frames = 1'000}});
  run.device->Spin(true);
  logged_exceptions::Take();
  run.player.onIsAttacca = [] { throw std::runtime_error("no memory"); };
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(logged_exceptions::Take(), "reference_suite/audio/output: no memory\n");
  EXPECT_EQ(run.device->Heard(), Frames(0, 1'000));
}

TEST(LiveOutput, AttaccaGoesOnWithoutAGap) {
  LiveRun run(Songs{{.frames = 500, .isAttacca = true}, {.frames = 5'000}});
  run.Start();
  ASSERT_TRUE(run.HasPlanned(500 + 264));
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  std::vector<float> expected = Frames(1, 500);
  AppendFrames(&expected, 0, 200, 1);
  EXPECT_EQ(run.device->Turn(699), expected);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 700) << "an attacca restarts nothing";
  EXPECT_EQ(run.output->GetUnderrunFrames(), 0);
}

TEST(LiveOutput, AnAttaccaThatWaitsForItsLoaderIsASilentGapAndNothingIsLost) {
  LiveRun run(Songs{{.frames = 2'000, .isAttacca = true}, {.frames = 2'000}});
  Barrier loader;
  const StaircaseContent next(2'000, 48000.0, 1);
  run.player.onAttacca = [&] { loader.Pass(); };
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return loader.IsReached(); }));
  // The loader's thread puts the new content in while the output waits in the player.
  std::string error;
  EXPECT_TRUE(run.output->SwitchContent(next, &error));
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() == 2'000; })) << "the ring plays on";
  EXPECT_TRUE(run.output->GetOutputIsRunning());
  loader.Open();
  ASSERT_TRUE(run.HasStopped());
  std::vector<float> expected = Frames(0, 2'000);
  AppendFrames(&expected, 0, 2'000, 1);
  EXPECT_EQ(run.device->Heard(), expected);
}

TEST(LiveOutput, TheEndOfTheShowStops) {
  LiveRun run(Songs{{.frames = 2'000, .isAttacca = true}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.player.Log(), "attacca\nstopped\n");
  EXPECT_EQ(run.device->Heard(), Frames(0, 2'000));
}

TEST(LiveOutput, AfterTheEndStartEndsAgain) {
  LiveRun run(Songs{{.frames = 2'000}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_TRUE(run.output->Stop(true)) << "once the player has been told";
  run.player.Play();
  ASSERT_TRUE(run.HasLogged("stopped\nplay\nstopped\n")) << run.player.Log();
}

TEST(LiveOutput, RefilledAtTheEndItAsksForTheNextSongOnlyWhenItStarts) {
  LiveRun run(Songs{{.frames = 2'000, .isAttacca = true}, {.frames = 500}});
  run.device->Spin(true);
  run.player.RewindAndRefill();
  run.player.SeekTo(2'000);
  EXPECT_EQ(run.player.Log(), "");
  run.player.Play();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.player.Log(), "play\nattacca\nstopped\n");
  EXPECT_EQ(run.device->Heard(), Frames(0, 500, 1));
}

TEST(LiveOutput, ASeekWhilePlayingDropsTheRingAndCountsItAsHeard) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.Start();
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  run.device->Turn(99);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 100);
  ASSERT_TRUE(run.HasPlanned(720 + 100));
  const long long before = run.player.Planned();
  run.player.SeekTo(50'000);
  while (run.device->Turn(1)[0] != ScriptedPlayer::Sample(50'000)) {
  }
  EXPECT_GE(run.output->GetElapsedSampleCount(), before);
  const long long now = run.output->GetElapsedSampleCount();
  ASSERT_TRUE(run.HasPlanned(now + 300));
  EXPECT_EQ(run.device->Turn(200), Frames(50'001, 50'201));
  EXPECT_EQ(run.output->GetElapsedSampleCount(), now + 200);
}

TEST(LiveOutput, ASeekWhilePausedGoesOnAtItsTargetExactly) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  for (int i = 1; i <= 50; ++i) {
    const long long target = i * 10'000;
    run.Pause();
    run.player.SeekTo(target);
    run.device->ClearHeard();
    EXPECT_EQ(run.output->GetElapsedSampleCount(), 0);
    run.player.SetPlays(true);
    run.output->Start();
    ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 300; }));
    ASSERT_EQ(run.device->Heard().front(), ScriptedPlayer::Sample(target));
  }
}

TEST(LiveOutput, ASeekAwayFromACaesuraThatIsAnnouncedPlaysOnAndFreesTheDisplay) {
  LiveRun run(Songs{{.frames = kEndless, .caesuras = {2'000}}});
  run.Start();
  ASSERT_TRUE(run.TurnsUntilLogged("approaching stop\n"));
  run.player.SeekTo(50'000);
  run.device->Spin(true);
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 3'000; }));
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\nplay\n");
}

TEST(LiveOutput, ASeekAwayFromAnAnnouncedCaesuraWhilePausedFreesTheDisplay) {
  LiveRun run(Songs{{.frames = kEndless, .caesuras = {2'000}}});
  run.Start();
  ASSERT_TRUE(run.TurnsUntilLogged("approaching stop\n"));
  std::future<void> pause = std::async(std::launch::async, [&] { run.Pause(); });
  ASSERT_TRUE(Await([&] { return !run.output->GetOutputIsRunning(); }));
  run.device->Turn(1);
  pause.get();
  run.device->Spin(true);
  run.player.SeekTo(50'000);
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\n");
}

TEST(LiveOutput, NoStepWhileASeekIsUnderWay) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.HasPlanned(2'000));
  long long planned = 0;
  {
    const exc::ExScopeFlag seeking(run.output->GetSeekFlag());
    {
      // A step that had begun before ends.
      exc::ScopeLock reading(run.player.GetReadSamplesLock());
    }
    planned = run.player.Planned();
    const long long silent = run.output->GetUnderrunFrames();
    ASSERT_TRUE(Await([&] { return run.output->GetUnderrunFrames() > silent + 10'000; }));
    EXPECT_EQ(run.player.Planned(), planned);
  }
  EXPECT_TRUE(run.HasPlanned(planned + 1)) << "and then it goes on";
}

TEST(LiveOutput, IdleWaitsForTheStepInProgressAndNoneFollows) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  Barrier plan;
  std::atomic<bool> holds{false};
  run.player.onPlan = [&] {
    if (holds.exchange(false)) plan.Pass();
  };
  run.Start();
  holds = true;
  ASSERT_TRUE(Await([&] { return plan.IsReached(); }));
  std::future<void> idle = std::async(std::launch::async, [&] { run.output->Idle(); });
  EXPECT_EQ(idle.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  plan.Open();
  idle.get();
  const long long planned = run.player.Planned();
  const long long silent = run.output->GetUnderrunFrames();
  ASSERT_TRUE(Await([&] { return run.output->GetUnderrunFrames() > silent + 10'000; }));
  EXPECT_EQ(run.player.Planned(), planned);
  run.output->Start();
  EXPECT_TRUE(run.HasPlanned(planned + 1));
}

TEST(LiveOutput, ARefillEndsTheIdlingOfAnOutputThatPlays) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.HasPlanned(2'000));
  run.output->Idle();
  run.player.RewindAndRefill();
  EXPECT_TRUE(run.HasPlanned(5'000));
}

TEST(LiveOutput, IdleOnTheRenderThreadReturns) {
  LiveRun run(Songs{{.frames = 1'000, .isAttacca = true}, {.frames = 1'000}});
  run.device->Spin(true);
  std::atomic<bool> isIdle{false};
  run.player.onAttacca = [&] {
    run.output->Idle();
    isIdle = true;
  };
  run.Start();
  ASSERT_TRUE(Await([&] { return isIdle.load(); }));
  run.output->Start();
  EXPECT_TRUE(run.HasStopped());
}

TEST(LiveOutput, AnotherFormatIsRefusedNamingBoth) {
  LiveRun run(Songs{{}});
  std::string error;
  EXPECT_FALSE(run.output->SwitchContent(StaircaseContent(10, 44100.0, 1), &error));
  EXPECT_EQ(
      error,
      "The audio has 44100 Hz with 1 channel, and the output runs at 48000 Hz with 1 channel. Convert the "
      "audio file, or let the show begin with another rate.");
  EXPECT_FALSE(run.output->SwitchContent(StaircaseContent(10, 48000.0, 2), &error));
}

TEST(LiveOutput, AnotherContentDropsTheRingAndPlansNothing) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.player.RewindAndRefill();
  const long long planned = run.player.Planned();
  run.player.AddToSampleIndex(50'000 - planned);  // another song begins there
  std::string error;
  EXPECT_TRUE(run.output->SwitchContent(StaircaseContent(10, 48000.0, 1), &error));
  EXPECT_EQ(run.player.Planned(), 50'000);
  run.player.Play();
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 300; }));
  EXPECT_EQ(run.device->Heard().front(), ScriptedPlayer::Sample(50'000));
  EXPECT_GE(run.output->GetElapsedSampleCount(), planned) << "what was dropped counts as heard";
}

TEST(LiveOutput, AnotherContentForgetsTheEndOfTheOneBefore) {
  LiveRun run(Songs{{.frames = 100'000, .caesuras = {300}}});
  run.device->Spin(true);
  run.player.RewindAndRefill();
  run.player.AddToSampleIndex(50'000 - 300);
  std::string error;
  EXPECT_TRUE(run.output->SwitchContent(StaircaseContent(10, 48000.0, 1), &error));
  run.player.Play();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.device->Heard(), Frames(50'000, 100'000));
  EXPECT_EQ(run.player.Log(), "play\nstopped\n");
}

TEST(LiveOutput, ATempoScaleIsPlayedAndCountedInFramesOfTheSong) {
  LiveRun run(Songs{{.frames = 60'000, .scales = {{5'000, 4.0L}, {45'000, 0.25L}}}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  const std::vector<float> heard = run.device->Heard();
  EXPECT_EQ(heard.size(), 5'000 + 10'000 + 60'000);
  EXPECT_EQ(std::vector<float>(heard.begin(), heard.begin() + 5'000), Frames(0, 5'000));
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 60'000);
}

TEST(LiveOutput, ABrokenPlanInARefillStopsPlaybackWhenItStarts) {
  const test_support::CoutCapture console;
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  std::atomic<int> plans{0};
  run.player.onPlan = [&] {
    if (++plans > 1) throw std::logic_error("broken");
  };
  run.player.RewindAndRefill();
  logged_exceptions::Take();
  run.player.Play();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_NE(logged_exceptions::Take(), "");
  EXPECT_EQ(run.device->Heard(), Frames(0, 264));
}

TEST(LiveOutput, ABrokenPlanStopsPlaybackInWords) {
  const test_support::CoutCapture console;
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  logged_exceptions::Take();
  std::atomic<int> plans{0};
  run.player.onPlan = [&] {
    if (++plans > 20) throw std::logic_error("broken");
  };
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.device->Heard(), Frames(0, 20 * 264));
  EXPECT_EQ(logged_exceptions::Take(), "reference_suite/audio/output: broken\n");
}

TEST(LiveOutput, FadesAreHeardOnPauseAndStartAndNotAtTheFirstFrameOfARefill) {
  LiveRun run(Songs{{.frames = kEndless}}, 0.0, 3.0);  // 144 frames
  run.Start();
  while (run.device->Turn(1)[0] == 0.0F) {
  }
  EXPECT_EQ(run.device->Heard().front(), ScriptedPlayer::Sample(0));
  EXPECT_EQ(run.device->Turn(199), Frames(1, 200));
  std::future<void> pause = std::async(std::launch::async, [&] { run.Pause(); });
  ASSERT_TRUE(Await([&] { return !run.output->GetOutputIsRunning(); }));
  const std::vector<float> out = run.device->Turn(200);
  pause.get();
  for (int i = 0; i < 144; ++i) {
    const double gain = 1.0 - (i + 1) / 144.0;
    ASSERT_NEAR(out[static_cast<std::size_t>(i)], ScriptedPlayer::Sample(200 + i) * gain, 0.001) << i;
  }
  EXPECT_EQ(out[143], 0.0F);
  EXPECT_EQ(out[199], 0.0F);
  run.player.SetPlays(true);
  run.output->Start();
  float first = 0.0F;
  while ((first = run.device->Turn(1)[0]) == 0.0F) {
  }
  EXPECT_NEAR(first, ScriptedPlayer::Sample(344) / 144.0, 0.001)
      << "goes on with the frame after the last one";
}

TEST(LiveOutput, TheFirstFrameOfALaterRefillIsNotFadedInEither) {
  LiveRun run(Songs{{.frames = kEndless}}, 0.0, 3.0);
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 2'000; }));
  ASSERT_TRUE(run.output->Stop(true));
  run.device->Spin(false);
  run.Start();
  float first = 0.0F;
  while ((first = run.device->Turn(1)[0]) == 0.0F) {
  }
  EXPECT_EQ(first, ScriptedPlayer::Sample(0));
  EXPECT_EQ(run.device->Turn(199), Frames(1, 200));
}

// Nothing of what was stretched before is left in what comes, also where the position has not moved.
TEST(LiveOutput, ARefillBeginsTheStretchAnew) {
  constexpr std::size_t kFrames = 10'000;
  const Songs songs{{.frames = kEndless, .scales = {{0, 0.8L}}}};
  const auto hearFromRefill = [](LiveRun* run) {
    run->device->ClearHeard();
    run->output->Refill();
    run->player.SetPlays(true);
    run->output->Start();
    EXPECT_TRUE(Await([&] { return run->device->HeardCount() > kFrames; }));
    EXPECT_TRUE(run->output->Stop(true));
    std::vector<float> heard = run->device->Heard();
    heard.resize(kFrames);
    return heard;
  };
  LiveRun run(songs, 5.0);
  run.device->Spin(true);
  hearFromRefill(&run);
  LiveRun fresh(songs, 5.0);
  fresh.device->Spin(true);
  fresh.player.AddToSampleIndex(run.player.GetSampleIndex());
  EXPECT_TRUE(hearFromRefill(&run) == hearFromRefill(&fresh));
}

TEST(LiveOutput, WithoutFadesEverySampleIsLeftAsItIs) {
  LiveRun run(Songs{{.frames = kEndless}}, 0.0, 0.0);
  run.device->Spin(true);
  run.Start();
  for (int i = 0; i < 20; ++i) {
    const std::size_t heard = run.device->HeardCount();
    ASSERT_TRUE(Await([&] { return run.device->HeardCount() > heard + 500; }));
    if (i % 2 == 0) run.Pause();
    if (i % 2 == 1) run.output->Stop(true);
    run.player.SetPlays(true);
    run.output->Start();
  }
  run.output->Stop(true);
  EXPECT_EQ(run.device->Heard(), Frames(0, static_cast<long long>(run.device->HeardCount())));
}

TEST(LiveOutput, PrepareForExitStopsTellsAndEndsTheThread) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 1'000; }));
  run.output->PrepareForExit();
  EXPECT_EQ(run.player.Log(), "stopped\n");
  EXPECT_FALSE(run.device->IsStarted());
  run.output->Start();
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  EXPECT_TRUE(run.output->Stop(true));
  run.output->PrepareForExit();
  EXPECT_EQ(run.player.Log(), "stopped\n");
}

TEST(LiveOutput, PrepareForExitFadesOutOverTenMilliseconds) {
  // Far enough ahead that the ring holds the whole fade, however long the render thread is kept from running.
  LiveRun run(Songs{{.frames = kEndless}}, 0.0, 3.0, 100.0);
  run.Start();
  while (run.device->HeardCount() < 500) run.device->Turn(1);
  ASSERT_TRUE(run.HasPlanned(500 + 4'800));
  std::future<void> exit = std::async(std::launch::async, [&] { run.output->PrepareForExit(); });
  const auto fades = [&] {
    const std::size_t next = run.device->HeardCount();
    return run.device->Turn(1)[0] < ScriptedPlayer::Sample(static_cast<long long>(next));
  };
  ASSERT_TRUE(Await(fades));
  while (run.device->IsStarted()) run.device->Turn(1);
  exit.get();
  const std::vector<float> heard = run.device->Heard();
  std::size_t faded = 0;
  for (std::size_t i = 0; i < heard.size(); ++i)
    faded += heard[i] < ScriptedPlayer::Sample(static_cast<long long>(i));
  EXPECT_EQ(faded, 479U) << "the last of them is silent";
}

TEST(LiveOutput, PrepareForExitDoesNotWaitForADeviceThatTakesNothing) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.timePasses = true;
  run.Start();
  run.output->PrepareForExit();
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  EXPECT_FALSE(run.device->IsStarted());
}

TEST(LiveOutput, DeletedWhilePlayingItTellsNobody) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 1'000; }));
  run.output.reset();
  EXPECT_EQ(run.player.Log(), "");
}

TEST(LiveOutput, DeletedItWaitsForACallToThePlayer) {
  LiveRun run(Songs{{.frames = 1'000, .isAttacca = true}, {}});
  Barrier loader;
  std::atomic<bool> isBack{false};
  run.player.onAttacca = [&] {
    loader.Pass();
    isBack = true;
  };
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return loader.IsReached(); }));
  std::future<void> deletion = std::async(std::launch::async, [&] {
    run.output.reset();
    EXPECT_TRUE(isBack);
  });
  EXPECT_EQ(deletion.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  loader.Open();
  deletion.get();
}

TEST(LiveOutput, ADeviceThatRefusesIsTold) {
  ScriptedPlayer player(Songs{{}});
  auto device = std::make_unique<TestDevice>();
  device->refuses = true;
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { tesk_audio::LiveSampleOutput(player, std::move(device), {}); }, "The device refuses."));
}

TEST(LiveOutput, AThreadThatCannotBeStartedIsTold) {
  ScriptedPlayer player(Songs{{}});
  const test_support::NoThreads none;
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { tesk_audio::LiveSampleOutput(player, std::make_unique<TestDevice>(), {}); },
      "The audio output cannot start its thread: Resource temporarily unavailable. Close other programs."));
}

TEST(LiveOutput, WithoutAThreadForTheMeterItPlaysAndSaysSo) {
  const test_support::CoutCapture console;
  LiveRun run(Songs{{.frames = 3'000}});
  {
    const test_support::NoThreads none;
    run.output->TellMeters();
  }
  EXPECT_EQ(console.Text(),
            "NOTICE: The meter of the audio output cannot start its thread: Resource temporarily "
            "unavailable. Close "
            "other programs.\n");
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.HasStopped());
}

// The system grants real-time priority to root, and to others within a limit.
struct NoRealTime {
  test_support::Limit limit{RLIMIT_RTPRIO, 0};
  test_support::Nobody nobody;
};

TEST(LiveOutput, WithoutTheRightToRealTimeItPlaysAndSaysSo) {
  const test_support::CoutCapture console;
  auto refused = std::make_unique<NoRealTime>();
  LiveRun run(Songs{{.frames = 3'000}});
  refused.reset();
  EXPECT_EQ(console.Text(),
            "NOTICE: the system grants the audio output no real-time priority; sound may drop out when other "
            "programs are busy. For a stage machine put \"@audio - rtprio 95\" into "
            "/etc/security/limits.d/audio.conf, add yourself to the group audio, and log in again.\n");
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(run.HasStopped());
  EXPECT_EQ(run.device->Heard(), Frames(0, 3'000));
}

}  // namespace
