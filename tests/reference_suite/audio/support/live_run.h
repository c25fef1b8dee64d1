#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "reference_suite/audio/output/live_sample_output.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/reference_suite/audio/support/test_device.h"

// Longer than any test lasts, and still counted exactly by floats.
constexpr long long kEndless = 15'000'000;

// A live output with a scripted player on a test device: one channel at 48 000 frames a second, as a rule 15
// ms ahead (720 frames), reads of 264 frames. A device has all the time there is to obey, so that a machine
// that stands still for a while is not taken for a device that does not answer, until a test lets time pass.
struct LiveRun {
  explicit LiveRun(Songs songs, double crossfadeMs = 0.0, double fadeMs = 0.0, double aheadMs = 15.0)
      : player(std::move(songs)) {
    tesk_audio::OutputSettings settings;
    settings.aheadMs = aheadMs;
    settings.crossfadeMs = crossfadeMs;
    settings.fadeMs = fadeMs;
    auto owned = std::make_unique<TestDevice>();
    device = owned.get();
    output = std::make_unique<tesk_audio::LiveSampleOutput>(player, std::move(owned), settings, [this] {
      ++clockLooks;
      return timePasses ? tesk_audio::MonotonicNow() : now.load();
    });
    player.SetOutput(output.get());
  }
  ~LiveRun() {
    if (output != nullptr && device->IsStarted())
      device->Spin(true);  // what waits for the device must not wait long
  }

  void Start() {
    player.RewindAndRefill();
    player.SetPlays(true);
    output->Start();
  }
  void Pause() {
    player.SetPlays(false);
    output->Pause();
  }

  // Waits until the render thread, which runs, has planned that many frames since the last refill, and they
  // are in the ring: it looks for what to do next only then.
  bool HasPlanned(long long frames) {
    if (!Await([&] { return player.Planned() >= frames; })) return false;
    const long long looks = device->GetLooks();
    return Await([&] { return device->GetLooks() > looks; });
  }
  // Turns the device by hand until the player has been told that, and leaves frames in the ring.
  bool TurnsUntilLogged(const std::string& text) {
    return Await([&] {
      if (player.Planned() - static_cast<long long>(device->HeardCount()) >= 400) device->Turn(16);
      return player.Log().find(text) != std::string::npos;
    });
  }
  bool HasStopped() {
    return Await([&] { return player.HasStopped(); });
  }
  bool Waits() {
    return Await([&] { return player.Waits(); });
  }
  bool HasLogged(const std::string& text) {
    return Await([&] { return player.Log().find(text) != std::string::npos; });
  }

  std::atomic<bool> timePasses{false};
  std::atomic<long long> now{0};   // while it does not
  std::atomic<int> clockLooks{0};  // while the device stands still, of those who wait for it
  ScriptedPlayer player;
  TestDevice* device = nullptr;  // the output's
  std::unique_ptr<tesk_audio::LiveSampleOutput> output;
};
