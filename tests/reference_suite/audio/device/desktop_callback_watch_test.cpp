// What the desktop's device does in the library's write callback allocates nothing, takes no lock and calls
// nothing of the system. The library here is the test's own: what the real one does around and inside its
// calls is its own.
#include <gtest/gtest.h>
#include <time.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "reference_suite/audio/device/desktop_device.h"
#include "reference_suite/audio/device/resilient_device.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/device_changes.h"
#include "tests/reference_suite/audio/support/fake_soundio.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/lock_watch.h"
#include "tests/support/system_call_watch.h"

namespace {

// Asks for sixteen frames a third of a millisecond, on a thread of its own as long as a stream runs.
class WatchedSystem : public FakeSystem {
 public:
  static constexpr int kPeriod = 16;

  WatchedSystem() {
    ::setenv("PULSE_SERVER", "of the test", 1);
    Add("Built in", "pci");
    onStart = [this] { Start_(); };
    onDestroy = [this] { Stop_(); };
  }

  std::atomic<int> blocks{0};
  std::atomic<int> allocations{0};
  std::atomic<int> locks{0};
  std::atomic<long> systemCall{-1};
  std::atomic<long long> ofSecondSong{0};  // frames that came out
  std::atomic<bool> isClosed{false};

 private:
  void Start_() {
    written.reserve(2 * kPeriod);
    stops_ = isClosed = false;
    thread_ = std::thread([this] {
      const timespec third{0, 330'000};
      while (!stops_) {
        AskWatched_();
        Note_();
        ::nanosleep(&third, nullptr);
      }
    });
  }
  void Stop_() {
    stops_ = true;
    if (thread_.joinable()) thread_.join();
    isClosed = true;
  }
  void AskWatched_() {
    const test_support::AllocationWatch memory;
    const test_support::LockWatch taken;
    const test_support::SystemCallWatch system;
    Ask(kPeriod);
    allocations += memory.Count();
    locks += taken.Count();
    if (system.GetFirst() != -1) systemCall = system.GetFirst();
  }
  void Note_() {
    for (std::size_t i = 0; i < written.size(); i += 2) ofSecondSong += written[i] < 0.0F ? 1 : 0;
    ++blocks;
  }

  std::atomic<bool> stops_{false};
  std::thread thread_;
};

// As loud as full scale allows: frames of the first song lie above zero, of the second below.
ScriptedPlayer::Song Song(long long frames, float value) {
  ScriptedPlayer::Song song;
  song.frames = frames;
  song.sound = std::make_shared<const std::vector<float>>(static_cast<std::size_t>(frames), value);
  return song;
}

Songs TwoSongs() {
  Songs songs{Song(30'000, 0.25F), Song(3'000'000, -0.25F)};
  songs[0].jumps = {{20'000, {5'000, 5'000}}};
  songs[0].isAttacca = true;
  return songs;
}

// Where the system lets no calls be noticed, allocations and locks are watched all the same.
TEST(DesktopCallback, AllocatesLocksAndCallsNothingInTenThousandBlocks) {
  WatchedSystem system;
  const auto chosen = std::make_shared<tesk_audio::DesktopDevice::Chosen>();
  tesk_audio::OutputSettings settings;
  settings.periodFrames = WatchedSystem::kPeriod;
  DeviceChanges changes;
  ScriptedPlayer player(TwoSongs());
  tesk_audio::LiveSampleOutput output(
      player,
      std::make_unique<tesk_audio::ResilientDevice>(
          tesk_audio::ResilientDevice::Shape{48'000.0, 1, 64},
          [=] { return std::make_unique<tesk_audio::DesktopDevice>(settings, 48'000.0, 1, chosen); },
          [&](const notify::DeviceUpdate& update) { changes.Note(update); }),
      settings);
  player.SetOutput(&output);
  const auto passes = [&](int blocks) {
    const int wanted = system.blocks + blocks;
    return Await([&] { return system.blocks >= wanted; });
  };
  player.RewindAndRefill();
  player.SetPlays(true);
  output.Start();
  ASSERT_TRUE(Await([&] { return system.ofSecondSong > 10'000; })) << "jumps, and the next song";
  player.liveScale = 2.0;
  player.liveSemitones = 2;
  ASSERT_TRUE(passes(500));
  const long long elapsed = output.GetElapsedSampleCount();
  const int blocks = system.blocks;
  ASSERT_TRUE(passes(1'000));
  EXPECT_GT(output.GetElapsedSampleCount() - elapsed,
            (system.blocks - blocks) * WatchedSystem::kPeriod * 3 / 2)
      << "twice as fast";
  player.liveScale = 1.0;
  player.liveSemitones = 0;
  ASSERT_TRUE(passes(500)) << "and back";
  for (int loss = 1; loss <= 3; ++loss) {
    system.isBare = true;
    ASSERT_TRUE(Await([&] { return changes.losses == loss && system.isClosed; }));
    system.isBare = false;
    ASSERT_TRUE(Await([&] { return changes.returns == loss; }));
    ASSERT_TRUE(passes(500)) << "an output is unplugged and comes back";
    player.SeekTo(1'000'000 + loss);
    player.SetPlays(false);
    output.Pause();
    ASSERT_TRUE(passes(200));
    player.SetPlays(true);
    output.Start();
  }
  ASSERT_TRUE(Await([&] { return system.blocks >= 10'000; }));
  EXPECT_EQ(system.allocations, 0);
  EXPECT_EQ(system.locks, 0);
  EXPECT_EQ(system.systemCall, -1) << "the number of the call";
  player.SetOutput(nullptr);
}

}  // namespace
