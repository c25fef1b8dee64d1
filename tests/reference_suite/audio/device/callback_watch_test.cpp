// What runs on the device's thread allocates nothing, takes no lock and calls nothing of the system.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cmath>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "reference_suite/audio/device/resilient_device.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/device_changes.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/lock_watch.h"
#include "tests/support/system_call_watch.h"

namespace {

// Asks for sixteen frames a third of a millisecond from a thread on which everything is counted.
class WatchedDevice : public tesk_audio::Device {
 public:
  static constexpr std::size_t kPeriod = 16;

  ~WatchedDevice() override { WatchedDevice::Stop(); }
  double GetRateHz() const override { return 48'000.0; }
  unsigned GetChannelCount() const override { return 1; }
  unsigned GetPeriodFrames() const override { return kPeriod; }
  unsigned GetLatencyFrames() const override { return 0; }
  std::string GetDescription() const override { return "watched device"; }
  bool HasFailed() const override { return failed; }
  void Start(tesk_audio::DeviceCallback& callback) override {
    thread_ = std::thread([this, &callback] { Run_(callback); });
  }
  void Stop() override {
    stops_ = true;
    if (thread_.joinable()) thread_.join();
  }

  std::atomic<bool> failed{false};
  static inline std::atomic<int> blocks{0};
  static inline std::atomic<int> allocations{0};
  static inline std::atomic<int> locks{0};
  static inline std::atomic<long long> ofSecondSong{0};  // frames that came out
  static inline std::atomic<long long> stretched{0};
  static inline std::atomic<bool> forbidden{true};

 private:
  void Run_(tesk_audio::DeviceCallback& callback) {
    std::array<float, kPeriod> frames{};
    const timespec third{0, 330'000};
    // But for those that wait.
    if (!test_support::ForbidSystemCallsBut({SYS_clock_nanosleep, SYS_nanosleep})) forbidden = false;
    while (!stops_) {
      {
        const test_support::AllocationWatch memory;
        const test_support::LockWatch taken;
        callback.Process(frames.data(), kPeriod);
        allocations += memory.Count();
        locks += taken.Count();
      }
      for (const float frame : frames) {
        // Numbers of frames as they are, or what is between them.
        if (frame != std::floor(frame)) ++stretched;
        if (frame > ScriptedPlayer::Sample(0, 1)) ++ofSecondSong;
      }
      ++blocks;
      ::nanosleep(&third, nullptr);
    }
  }

  std::thread thread_;
  std::atomic<bool> stops_{false};
};

TEST(DeviceCallback, AllocatesLocksAndCallsNothingInTenThousandBlocks) {
  std::mutex mutex;
  std::deque<std::unique_ptr<WatchedDevice>> devices;
  for (int i = 0; i < 4; ++i) devices.push_back(std::make_unique<WatchedDevice>());
  WatchedDevice* current = nullptr;
  const auto source = [&]() -> std::unique_ptr<tesk_audio::Device> {
    const std::lock_guard lock(mutex);
    if (devices.empty()) throw tesk_audio::TESKAudioError("No more.");
    auto device = std::move(devices.front());
    devices.pop_front();
    current = device.get();
    return device;
  };
  ScriptedPlayer player(Songs{{.frames = 30'000, .jumps = {{20'000, {5'000, 5'000}}}, .isAttacca = true},
                              {.frames = 15'000'000}});
  DeviceChanges changes;
  tesk_audio::OutputSettings settings;
  tesk_audio::LiveSampleOutput output(player,
                                      std::make_unique<tesk_audio::ResilientDevice>(
                                          tesk_audio::ResilientDevice::Shape{48'000.0, 1, 64}, source,
                                          [&](const notify::DeviceUpdate& update) { changes.Note(update); }),
                                      settings);
  player.SetOutput(&output);
  player.RewindAndRefill();
  player.SetPlays(true);
  output.Start();
  const auto reaches = [](int count) { return Await([count] { return WatchedDevice::blocks >= count; }); };
  ASSERT_TRUE(reaches(3'000));
  ASSERT_TRUE(Await([] { return WatchedDevice::ofSecondSong > 10'000; })) << "jumps, and the next song";
  const long long faded = WatchedDevice::stretched;
  player.liveScale = 1.1;
  player.liveSemitones = 2;
  ASSERT_TRUE(reaches(3'500));
  ASSERT_TRUE(Await([&] { return WatchedDevice::stretched > faded + 5'000; })) << "another tempo and key";
  player.liveScale = 0.9;
  player.liveSemitones = 0;
  ASSERT_TRUE(reaches(3'750)) << "and others again";
  player.liveScale = 1.0;
  ASSERT_TRUE(reaches(4'000)) << "and back";
  for (int i = 0; i < 3; ++i) {
    {
      const std::lock_guard lock(mutex);
      current->failed = true;
    }
    ASSERT_TRUE(Await([&] { return changes.losses == i + 1 && changes.returns == i + 1; }))
        << "a device is lost, another comes";
    ASSERT_TRUE(reaches(4'500 + 1'500 * i));
    player.SeekTo(1'000'000 + i);
    player.SetPlays(false);
    output.Pause();
    ASSERT_TRUE(reaches(5'000 + 1'500 * i));
    player.SetPlays(true);
    output.Start();
  }
  ASSERT_TRUE(reaches(10'000));
  EXPECT_EQ(WatchedDevice::allocations, 0);
  EXPECT_EQ(WatchedDevice::locks, 0);
  ASSERT_TRUE(WatchedDevice::forbidden) << "the system does not let its calls be watched";
  EXPECT_EQ(test_support::GetForbiddenSystemCalls(), 0);
  player.SetOutput(nullptr);
}

TEST(DeviceCallback, TheWatchSeesWhatItLooksFor) {
  const int callsBefore = test_support::GetForbiddenSystemCalls();
  int allocations = 0;
  int locks = 0;
  std::thread([&] {
    ASSERT_TRUE(test_support::ForbidSystemCallsBut({}));
    const test_support::AllocationWatch memory;
    const test_support::LockWatch taken;
    std::mutex mutex;
    mutex.lock();
    mutex.unlock();
    ::syscall(SYS_getppid);
    const auto owned = std::make_unique<std::array<char, 64>>();
    (*owned)[0] = 1;
    allocations = memory.Count();
    locks = taken.Count();
  }).join();
  EXPECT_EQ(locks, 1);
  EXPECT_EQ(test_support::GetForbiddenSystemCalls(), callsBefore + 1);
  EXPECT_EQ(allocations, 1);
}

}  // namespace
