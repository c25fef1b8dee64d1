// Commands to the live output at the moments at which they meet what its render thread does.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <vector>

#include "exc/flag/ex_scope_flag.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/barrier.h"
#include "tests/reference_suite/audio/support/live_run.h"
#include "tests/reference_suite/audio/support/logged_exceptions.h"
#include "tests/reference_suite/audio/support/offline_run.h"

namespace {

// Until the first frame is heard.
void TurnUntilHeard(LiveRun* run) {
  while (run->device->Turn(1)[0] == 0.0F) {
  }
}

// While the device is turned by hand, which obeys after a frame.
void PauseByHand(LiveRun* run) {
  std::future<void> pause = std::async(std::launch::async, [&] { run->Pause(); });
  ASSERT_TRUE(Await([&] { return !run->output->GetOutputIsRunning(); }));
  run->device->Turn(1);
  pause.get();
}

// The player may take itself for stopped before it is started or behind it, which only the player knows.
class LiveRacesTelling : public testing::Test {
 protected:
  void SetUp() override {
    run.player.onStopped = [this] {
      if (isFirst.exchange(false)) told.Pass();
    };
    run.device->Spin(true);
    run.Start();
    run.output->Stop(false);
    ASSERT_TRUE(Await([&] { return told.IsReached(); }));
  }

  LiveRun run{Songs{{.frames = kEndless}}};
  Barrier told;
  std::atomic<bool> isFirst{true};
};

TEST_F(LiveRacesTelling, AStartGoesThroughThePlayerOnceMoreWhenItIsTold) {
  run.player.Play();
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  told.Open();
  ASSERT_TRUE(run.HasLogged("stopped\nplay\nplay\n")) << run.player.Log();
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "stopped\nplay\nplay\nstopped\n");
}

// A player that takes itself for playing does nothing more when it is asked to play.
TEST_F(LiveRacesTelling, AStartThatThePlayerHasMadeBehindItIsMade) {
  run.player.onPlay = [] { throw std::runtime_error("plays already"); };
  logged_exceptions::Take();
  run.output->Start();
  told.Open();
  EXPECT_TRUE(Await([&] { return run.output->GetOutputIsRunning(); }));
  EXPECT_EQ(run.player.Log(), "stopped\nplay\n");
  logged_exceptions::Take();
}

TEST_F(LiveRacesTelling, AStartThatIsTakenBackByAStopIsToldAsOne) {
  run.output->Start();
  EXPECT_TRUE(run.output->Stop(false));
  std::future<bool> stop = std::async(std::launch::async, [&] { return run.output->Stop(true); });
  EXPECT_EQ(stop.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  told.Open();
  EXPECT_TRUE(stop.get());
  EXPECT_EQ(run.player.Log(), "stopped\nstopped\n");
  EXPECT_FALSE(run.output->GetOutputIsRunning());
}

TEST_F(LiveRacesTelling, AStartThatIsTakenBackByAPauseIsNone) {
  run.output->Start();
  run.output->Pause();
  told.Open();
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "stopped\n");
  EXPECT_FALSE(run.output->GetOutputIsRunning());
}

// While the player, which has been told of a stop, starts the output again because that was asked for before.
class LiveRacesStartingAgain : public testing::Test {
 protected:
  // Leaves the render thread in that call of the player.
  void ComeThere(std::function<void()>* where) {
    int calls = 0;
    *where = [this, calls]() mutable {
      if (++calls == 2) again.Pass();
    };
    run.Start();
    TurnUntilHeard(&run);
    run.output->Stop(false);
    run.player.Play();
    run.device->Spin(true);
    ASSERT_TRUE(Await([&] { return again.IsReached(); }));
  }

  LiveRun run{Songs{{.frames = kEndless}}};
  Barrier again;
};

TEST_F(LiveRacesStartingAgain, AStopIsObeyedBehindTheStart) {
  ComeThere(&run.player.onPlay);
  run.output->Stop(false);
  again.Open();
  EXPECT_TRUE(run.HasLogged("play\nstopped\nplay\nstopped\n")) << run.player.Log();
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  EXPECT_EQ(run.player.Log(), "play\nstopped\nplay\nstopped\n");
}

TEST_F(LiveRacesStartingAgain, APauseThatFindsItStartedIsAPauseAndNoStop) {
  ComeThere(&run.player.onPlayed);
  run.Pause();
  again.Open();
  run.player.Play();
  const std::size_t heard = run.device->HeardCount();
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > heard + 2'000; }));
  EXPECT_EQ(run.player.Log(), "play\nstopped\nplay\nplay\n");
}

// It would be told twice that it has stopped.
TEST(LiveRaces, AStopInACaesuraThatFailsIsToldOnce) {
  LiveRun run(Songs{{.frames = 10'000, .caesuras = {1'000}}});
  run.device->Spin(true);
  Barrier caesura;
  run.player.onCaesura = [&] {
    caesura.Pass();
    throw std::runtime_error("no caesura");
  };
  logged_exceptions::Take();
  run.Start();
  ASSERT_TRUE(Await([&] { return caesura.IsReached(); }));
  EXPECT_TRUE(run.output->Stop(false));
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\ncaesura\n");
  run.player.ClearLog();
  std::future<bool> stop = std::async(std::launch::async, [&] { return run.output->Stop(true); });
  caesura.Open();
  EXPECT_TRUE(stop.get());
  EXPECT_EQ(run.player.Log(), "stopped\n");
  EXPECT_EQ(logged_exceptions::Take(), "reference_suite/audio/output: no caesura\n");
}

// The display would be held at a stop that never comes.
TEST(LiveRaces, ASeekWhileAStopIsAnnouncedFreesTheDisplayBehindIt) {
  LiveRun run(Songs{{.frames = kEndless, .caesuras = {2'000}}});
  Barrier announced;
  run.player.onApproachingStop = [&] { announced.Pass(); };
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return announced.IsReached(); }));
  run.Pause();
  std::future<void> seek = std::async(std::launch::async, [&] { run.player.SeekTo(50'000); });
  EXPECT_EQ(seek.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  announced.Open();
  seek.get();
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\n");
}

// The look at an announced end that has begun before the pause finds the position moved behind it.
TEST(LiveRaces, APauseThatASeekIsFoundBehindStaysAPause) {
  LiveRun run(Songs{{.frames = kEndless, .caesuras = {2'000}}});
  Barrier look;
  std::atomic<bool> isArmed{false};
  run.player.onPosition = [&] {
    if (isArmed.exchange(false)) look.Pass();
  };
  run.Start();
  ASSERT_TRUE(run.TurnsUntilLogged("approaching stop\n"));
  isArmed = true;
  ASSERT_TRUE(Await([&] { return look.IsReached(); }));
  PauseByHand(&run);
  std::future<void> seek = std::async(std::launch::async, [&] { run.player.SeekTo(50'000); });
  ASSERT_TRUE(Await([&] { return run.player.Position() == 50'000; }));
  look.Open();
  seek.get();
  EXPECT_TRUE(run.HasLogged("clear approaching stop\n"));
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  run.device->Spin(true);
  EXPECT_TRUE(run.output->Stop(true)) << "behind everything that the look has led to";
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\nstopped\n");
}

// Its player takes itself for playing, and was about to refill when somebody else had it play.
TEST(LiveRaces, ARefillOfWhatWasStartedMeanwhileGoesOnPlaying) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.device->Spin(true);
  run.Start();
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > 2'000; }));
  {
    // As a seek does it: nothing is read between its move and its refill.
    const exc::ExScopeFlag seeking(run.output->GetSeekFlag());
    run.player.RewindAndRefill();
  }
  const std::size_t heard = run.device->HeardCount();
  EXPECT_TRUE(run.output->GetOutputIsRunning());
  ASSERT_TRUE(Await([&] { return run.device->HeardCount() > heard + 2'000; }));
  EXPECT_TRUE(run.output->Stop(true));
  const std::vector<float> all = run.device->Heard();
  const auto again = std::find(all.begin() + 1, all.end(), ScriptedPlayer::Sample(0));
  EXPECT_EQ(std::vector<float>(all.begin(), again), Frames(0, again - all.begin()));
  EXPECT_EQ(std::vector<float>(again, all.end()), Frames(0, all.end() - again));
}

TEST(LiveRaces, APauseRightBehindASeekGoesOnAtItsTarget) {
  LiveRun run(Songs{{.frames = kEndless}});
  run.Start();
  TurnUntilHeard(&run);
  ASSERT_GT(run.player.Planned() - 1, 720) << "as much ahead as is wanted";
  {
    // The render thread learns of the seek only when it plays on.
    const exc::ExScopeFlag seeking(run.output->GetSeekFlag());
    run.player.SeekTo(50'000);
    PauseByHand(&run);
  }
  const long long before = run.player.Planned();
  run.device->ClearHeard();
  run.player.Play();
  TurnUntilHeard(&run);
  EXPECT_EQ(run.device->Heard().front(), ScriptedPlayer::Sample(50'000));
  EXPECT_EQ(run.output->GetElapsedSampleCount(), before + 1) << "what was dropped counts as heard";
}

TEST(LiveRaces, APauseRightBehindASeekAwayFromAnEndGoesOnAtItsTarget) {
  LiveRun run(Songs{{.frames = 100'000, .caesuras = {900}}});
  run.Start();
  ASSERT_TRUE(run.TurnsUntilLogged("approaching stop\n"));
  {
    const exc::ExScopeFlag seeking(run.output->GetSeekFlag());
    run.player.SeekTo(50'000);
    PauseByHand(&run);
  }
  run.device->ClearHeard();
  run.player.Play();
  TurnUntilHeard(&run);
  EXPECT_EQ(run.device->Heard().front(), ScriptedPlayer::Sample(50'000));
}

TEST(LiveRaces, DeletedWhilePlayingItFadesOut) {
  // Far enough ahead that the ring holds the whole fade.
  LiveRun run(Songs{{.frames = kEndless}}, 0.0, 3.0, 100.0);
  run.Start();
  while (run.device->HeardCount() < 500) run.device->Turn(1);
  ASSERT_TRUE(run.HasPlanned(500 + 4'800));
  std::future<void> deletion = std::async(std::launch::async, [&] { run.output.reset(); });
  // However long the device takes. It goes with the output.
  EXPECT_EQ(deletion.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  const auto fades = [&] {
    const std::size_t next = run.device->HeardCount();
    return run.device->Turn(1)[0] < ScriptedPlayer::Sample(static_cast<long long>(next));
  };
  ASSERT_TRUE(Await(fades));
  int faded = 1;
  float last = 0.0F;
  while ((last = run.device->Turn(1)[0]) != 0.0F) {
    ASSERT_LT(last, ScriptedPlayer::Sample(500 + faded)) << "it goes on fading";
    ASSERT_LT(++faded, 480);
  }
  deletion.get();
  EXPECT_EQ(faded, 479);
}

}  // namespace
