// What runs on the process thread of JACK's library, from where the library hands over to where it gets the
// thread back: allocates nothing, takes no lock and calls nothing of the system. What the library itself does
// before and after is its own.
#include <gtest/gtest.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <mutex>
#include <thread>

#include "reference_suite/audio/device/jack_device.h"
#include "reference_suite/audio/device/resilient_device.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/device_changes.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/jack_process_tap.h"
#include "tests/support/jack_server.h"
#include "tests/support/lock_watch.h"
#include "tests/support/system_call_watch.h"

namespace {

using tesk_audio::JackDevice;
using test_support::JackServer;

class Watched : public test_support::JackProcessTap {
 public:
  Watched() { test_support::SetJackProcessTap(this); }
  ~Watched() override { test_support::SetJackProcessTap(nullptr); }

  int Process(jack_client_t* client, jack_nframes_t frames, JackProcessCallback call,
              void* argument) override {
    const int result = Call_(frames, call, argument);
    jack_port_t* const port = ::jack_port_by_name(client, "orbel:out_1");
    const auto* const out = static_cast<const float*>(::jack_port_get_buffer(port, frames));
    for (jack_nframes_t i = 0; i < frames; ++i) {
      // Numbers of frames as they are, or what is between them.
      if (out[i] != std::floor(out[i])) ++stretched;
      if (out[i] > ScriptedPlayer::Sample(0, 1)) ++ofSecondSong;
    }
    ++blocks;
    return result;
  }

  std::atomic<int> blocks{0};
  std::atomic<int> allocations{0};
  std::atomic<int> locks{0};
  std::atomic<long> systemCall{-1};
  std::atomic<long long> ofSecondSong{0};  // frames that came out
  std::atomic<long long> stretched{0};

 private:
  int Call_(jack_nframes_t frames, JackProcessCallback call, void* argument) {
    const test_support::AllocationWatch memory;
    const test_support::LockWatch taken;
    const test_support::SystemCallWatch system;
    const int result = call(frames, argument);
    allocations += memory.Count();
    locks += taken.Count();
    if (system.GetFirst() != -1) systemCall = system.GetFirst();
    return result;
  }
};

// A device that is looked for on a server of that name, and how often it was lost and found again.
struct Stage {
  explicit Stage(const std::string& server)
      : output(player,
               std::make_unique<tesk_audio::ResilientDevice>(
                   tesk_audio::ResilientDevice::Shape{48'000.0, 1, 64},
                   [server, links = links] { return std::make_unique<JackDevice>(server, 1, links); },
                   [this](const notify::DeviceUpdate& update) { changes.Note(update); }),
               tesk_audio::OutputSettings()) {
    player.SetOutput(&output);
  }
  ~Stage() { player.SetOutput(nullptr); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  const std::shared_ptr<tesk_audio::JackLinks> links =
      std::make_shared<tesk_audio::JackLinks>(tesk_audio::JackWishes{.channels = 1});
  DeviceChanges changes;
  ScriptedPlayer player{Songs{{.frames = 30'000, .jumps = {{20'000, {5'000, 5'000}}}, .isAttacca = true},
                              {.frames = 15'000'000}}};
  tesk_audio::LiveSampleOutput output;
};

// Where the system lets no calls be noticed, allocations and locks are watched all the same.
TEST(JackCallback, AllocatesLocksAndCallsNothingInTenThousandBlocks) {
  const JackServer::Shape shape{.periodFrames = 32};
  auto server = std::make_unique<JackServer>(shape);
  Watched watched;
  Stage stage(server->GetName());
  const auto passes = [&](int blocks) {
    const int wanted = watched.blocks + blocks;
    return Await([&] { return watched.blocks >= wanted; });
  };
  stage.player.RewindAndRefill();
  stage.player.SetPlays(true);
  stage.output.Start();
  ASSERT_TRUE(Await([&] { return watched.ofSecondSong > 10'000; })) << "jumps, and the next song";
  const long long faded = watched.stretched;
  stage.player.liveScale = 1.1;
  stage.player.liveSemitones = 2;
  ASSERT_TRUE(Await([&] { return watched.stretched > faded + 20'000; })) << "another tempo and key";
  stage.player.liveScale = 0.9;
  stage.player.liveSemitones = 0;
  ASSERT_TRUE(passes(500)) << "and others again";
  stage.player.liveScale = 1.0;
  ASSERT_TRUE(passes(500)) << "and back";
  for (int loss = 1; loss <= 3; ++loss) {
    const bool hangs = loss == 2;
    if (hangs) server->Signal(SIGSTOP);
    if (!hangs) server->End(loss == 1 ? SIGKILL : SIGTERM);
    ASSERT_TRUE(Await([&] { return stage.changes.losses == loss; }));
    if (hangs) server->Signal(SIGCONT);
    if (!hangs) server = std::make_unique<JackServer>(shape, server->GetName());
    ASSERT_TRUE(Await([&] { return stage.changes.returns == loss; }));
    ASSERT_TRUE(passes(500)) << "a server is lost and comes back";
    stage.player.SeekTo(1'000'000 + loss);
    stage.player.SetPlays(false);
    stage.output.Pause();
    ASSERT_TRUE(passes(200));
    stage.player.SetPlays(true);
    stage.output.Start();
  }
  ASSERT_TRUE(Await([&] { return watched.blocks >= 10'000; }));
  EXPECT_EQ(watched.allocations, 0);
  EXPECT_EQ(watched.locks, 0);
  EXPECT_EQ(watched.systemCall, -1) << "the number of the call";
}

TEST(JackCallback, TheWatchSeesEveryKindOfLock) {
  std::thread([] {
    const test_support::LockWatch locks;
    std::mutex mutex;
    mutex.lock();
    mutex.unlock();
    EXPECT_EQ(locks.Count(), 1);
    EXPECT_TRUE(mutex.try_lock());
    mutex.unlock();
    EXPECT_EQ(locks.Count(), 2) << "tried as well";
    pthread_rwlock_t shared = PTHREAD_RWLOCK_INITIALIZER;
    ::pthread_rwlock_rdlock(&shared);
    ::pthread_rwlock_unlock(&shared);
    EXPECT_EQ(locks.Count(), 3);
    sem_t semaphore;
    ::sem_init(&semaphore, 0, 1);
    ::sem_wait(&semaphore);
    EXPECT_EQ(::sem_trywait(&semaphore), -1);
    EXPECT_EQ(locks.Count(), 5);
  }).join();
}

TEST(JackCallback, TheWatchSeesACallToTheSystem) {
  // It takes a kernel that sends calls of a thread's own choice back to it, and this kind of processor: where
  // they are not there, there is no watch that could be tried.
  if (!test_support::SystemCallWatch::IsPossible()) GTEST_SKIP() << "the system lets no calls be noticed";
  std::thread([] {
    long pid = 0;
    long first = 0;
    {
      const test_support::SystemCallWatch system;
      EXPECT_EQ(system.GetFirst(), -1);
      pid = ::syscall(SYS_getpid);
      first = system.GetFirst();
    }
    EXPECT_EQ(first, SYS_getpid);
    EXPECT_EQ(pid, ::getpid()) << "the call itself passes";
    const test_support::SystemCallWatch again;
    EXPECT_EQ(again.GetFirst(), -1) << "before and after there may be others";
  }).join();
}

}  // namespace
