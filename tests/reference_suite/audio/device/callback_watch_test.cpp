// What runs on the device's thread allocates nothing, takes no lock and calls nothing of the system.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>

#include <array>
#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "reference_suite/audio/device/resilient_device.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/system_call_watch.h"

namespace {

thread_local bool insideCallback = false;
std::atomic<int> locks{0};

}  // namespace

// Stands before the system's.
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  using Lock = int (*)(pthread_mutex_t*);
  static const auto next = reinterpret_cast<Lock>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  if (insideCallback) ++locks;
  return next(mutex);
}

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
  static inline std::atomic<bool> forbidden{true};

 private:
  void Run_(tesk_audio::DeviceCallback& callback) {
    std::array<float, kPeriod> frames{};
    const timespec third{0, 330'000};
    // But for those that wait.
    if (!test_support::ForbidSystemCallsBut({SYS_clock_nanosleep, SYS_nanosleep})) forbidden = false;
    while (!stops_) {
      {
        const test_support::AllocationWatch watch;
        insideCallback = true;
        callback.Process(frames.data(), kPeriod);
        insideCallback = false;
        allocations += static_cast<int>(watch.Count());
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
  tesk_audio::OutputSettings settings;
  tesk_audio::LiveSampleOutput output(
      player,
      std::make_unique<tesk_audio::ResilientDevice>(tesk_audio::ResilientDevice::Shape{48'000.0, 1, 64},
                                                    source, nullptr),
      settings);
  player.SetOutput(&output);
  player.RewindAndRefill();
  player.SetPlays(true);
  output.Start();
  const auto reaches = [](int count) { return Await([count] { return WatchedDevice::blocks >= count; }); };
  ASSERT_TRUE(reaches(3'000)) << "jumps, and the next song";
  player.liveScale = 1.1;
  player.liveSemitones = 2;
  ASSERT_TRUE(reaches(3'500)) << "another tempo and key";
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
    ASSERT_TRUE(reaches(4'500 + 1'500 * i)) << "a device is lost and another comes";
    player.SeekTo(1'000'000 + i);
    player.SetPlays(false);
    output.Pause();
    ASSERT_TRUE(reaches(5'000 + 1'500 * i));
    player.SetPlays(true);
    output.Start();
  }
  ASSERT_TRUE(reaches(10'000));
  EXPECT_EQ(WatchedDevice::allocations, 0);
  EXPECT_EQ(locks, 0);
  ASSERT_TRUE(WatchedDevice::forbidden) << "the system does not let its calls be watched";
  EXPECT_EQ(test_support::GetForbiddenSystemCalls(), 0);
  player.SetOutput(nullptr);
}

TEST(DeviceCallback, TheWatchSeesWhatItLooksFor) {
  const int locksBefore = locks;
  const int callsBefore = test_support::GetForbiddenSystemCalls();
  std::size_t allocations = 0;
  std::thread([&] {
    ASSERT_TRUE(test_support::ForbidSystemCallsBut({}));
    const test_support::AllocationWatch watch;
    insideCallback = true;
    std::mutex mutex;
    mutex.lock();
    mutex.unlock();
    ::syscall(SYS_getppid);
    const auto owned = std::make_unique<std::array<char, 64>>();
    (*owned)[0] = 1;
    insideCallback = false;
    allocations = static_cast<std::size_t>(watch.Count());
  }).join();
  EXPECT_EQ(locks, locksBefore + 1);
  EXPECT_EQ(test_support::GetForbiddenSystemCalls(), callsBefore + 1);
  EXPECT_EQ(allocations, 1U);
}

}  // namespace
