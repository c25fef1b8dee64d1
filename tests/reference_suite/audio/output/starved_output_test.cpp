// A live output on a real JACK server when its render thread does not get to run: everything that goes to the
// server is written down, so that nothing depends on what the server makes of it.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/jack_device.h"
#include "reference_suite/audio/device/resilient_device.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/device_changes.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/support/jack_process_tap.h"
#include "tests/support/jack_server.h"

namespace {

using test_support::JackServer;

constexpr unsigned kPeriod = 256;

// What the client gives to the server, period by period.
class Tape : public test_support::JackProcessTap {
 public:
  Tape() : frames_(std::make_unique_for_overwrite<float[]>(kRoom)) { test_support::SetJackProcessTap(this); }
  ~Tape() override { test_support::SetJackProcessTap(nullptr); }

  int Process(jack_client_t* client, jack_nframes_t frames, JackProcessCallback call,
              void* argument) override {
    const int result = call(frames, argument);
    jack_port_t* const port = ::jack_port_by_name(client, "orbel:out_1");
    const auto* const out = static_cast<const float*>(::jack_port_get_buffer(port, frames));
    const std::size_t count = count_;
    const std::size_t kept = std::min<std::size_t>(frames, kRoom - count);
    std::copy_n(out, kept, frames_.get() + count);
    sounding_ += std::count_if(out, out + kept, [](float sample) { return sample != 0.0F; });
    sounds_ = out[frames - 1] != 0.0F;
    count_ = count + kept;
    return result;
  }

  std::size_t GetCount() const { return count_; }
  // Frames of the song.
  long long GetSounding() const { return sounding_; }
  // At its end.
  bool Sounds() const { return sounds_; }
  // From the first sound to the last.
  std::vector<float> GetFrames() const {
    const float* const end = frames_.get() + count_.load();
    const auto isSound = [](float sample) { return sample != 0.0F; };
    const float* const first = std::find_if(static_cast<const float*>(frames_.get()), end, isSound);
    std::vector<float> frames(first, end);
    while (!frames.empty() && !isSound(frames.back())) frames.pop_back();
    return frames;
  }

 private:
  static constexpr std::size_t kRoom = 20'000'000;
  const std::unique_ptr<float[]> frames_;
  std::atomic<std::size_t> count_{0};
  std::atomic<long long> sounding_{0};
  std::atomic<bool> sounds_{false};
};

// One endless song on a server of that name.
struct Stage {
  explicit Stage(const std::string& server)
      : output(player,
               std::make_unique<tesk_audio::ResilientDevice>(
                   tesk_audio::ResilientDevice::Shape{48'000.0, 1, kPeriod},
                   [server, links = links] {
                     return std::make_unique<tesk_audio::JackDevice>(server, 1, links);
                   },
                   [this](const notify::DeviceUpdate& update) { changes.Note(update); }),
               Bare()) {
    player.SetOutput(&output);
    player.RewindAndRefill();
  }
  ~Stage() { player.SetOutput(nullptr); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  static tesk_audio::OutputSettings Bare() {
    tesk_audio::OutputSettings settings;
    settings.crossfadeMs = settings.fadeMs = 0.0;
    return settings;
  }
  void Play() {
    player.SetPlays(true);
    output.Start();
  }
  void Pause() {
    player.SetPlays(false);
    output.Pause();
  }

  const std::shared_ptr<tesk_audio::JackLinks> links =
      std::make_shared<tesk_audio::JackLinks>(tesk_audio::JackWishes{.channels = 1});
  DeviceChanges changes;
  ScriptedPlayer player{Songs{{.frames = 15'000'000}}};
  tesk_audio::LiveSampleOutput output;
};

// The song frame by frame, with silences between; as much of it as was counted.
void ExpectTheSongWithSilences(const std::vector<float>& frames, long long silent) {
  long long next = 0;
  long long silence = 0;
  for (const float sample : frames) {
    if (sample == 0.0F) {
      ++silence;
      continue;
    }
    ASSERT_EQ(sample, ScriptedPlayer::Sample(next)) << "no frame is left out, and none comes twice";
    ++next;
  }
  EXPECT_EQ(silence, silent) << "for the missing frames only, and every one of them is counted";
  EXPECT_GT(silence, 0);
}

TEST(StarvedOutput, WhileNothingIsRenderedThereIsSilenceThatIsCountedAndThePositionStands) {
  const JackServer server({.periodFrames = kPeriod});
  Tape tape;
  Stage stage(server.GetName());
  std::atomic<bool> isHeld{false};
  stage.player.onPlan = [&] {
    while (isHeld) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  };
  stage.Play();
  for (int round = 0; round < 5; ++round) {
    const long long before = tape.GetSounding();
    ASSERT_TRUE(Await([&] { return tape.GetSounding() > before + 20'000; }));
    isHeld = true;
    ASSERT_TRUE(Await([&] { return !tape.Sounds(); })) << "the ring has run dry";
    // Longer than from here to the loudspeaker.
    const std::size_t dry = tape.GetCount();
    ASSERT_TRUE(Await([&] { return tape.GetCount() > dry + 10 * kPeriod; }));
    EXPECT_EQ(stage.output.GetElapsedSampleCount(), tape.GetSounding()) << "where the listener is";
    isHeld = false;
  }
  const long long before = tape.GetSounding();
  ASSERT_TRUE(Await([&] { return tape.GetSounding() > before + 20'000; }));
  stage.Pause();
  ASSERT_TRUE(Await([&] { return !tape.Sounds(); }));
  EXPECT_TRUE(Await([&] { return stage.output.GetElapsedSampleCount() == tape.GetSounding(); }));
  ExpectTheSongWithSilences(tape.GetFrames(), stage.output.GetUnderrunFrames());
  EXPECT_EQ(stage.changes.losses, 0);
}

bool RunsInRealTime(int priority) {
  sched_param parameters{};
  parameters.sched_priority = priority;
  return ::pthread_setschedparam(::pthread_self(), SCHED_FIFO, &parameters) == 0;
}

// Takes every processor that the program may use from all who stand no higher than `priority`. False: the
// system grants no real time.
bool SpinEverywhere(int priority, std::chrono::milliseconds time) {
  cpu_set_t allowed;
  ::sched_getaffinity(0, sizeof allowed, &allowed);
  std::atomic<bool> isGranted{true};
  std::atomic<int> waiting{CPU_COUNT(&allowed)};
  std::atomic<long long> begin{0};
  std::vector<std::thread> spinners;
  for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
    if (!CPU_ISSET(processor, &allowed)) continue;
    spinners.emplace_back([&, processor] {
      cpu_set_t one;
      CPU_ZERO(&one);
      CPU_SET(processor, &one);
      ::pthread_setaffinity_np(::pthread_self(), sizeof one, &one);
      --waiting;
      while (begin == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      if (!RunsInRealTime(priority)) {
        isGranted = false;
        return;
      }
      const timespec at{begin / 1'000'000'000, begin % 1'000'000'000};
      ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr);
      const long long end = begin + std::chrono::nanoseconds(time).count();
      while (tesk_audio::MonotonicNow() < end) {
      }
    });
  }
  EXPECT_TRUE(Await([&] { return waiting == 0; }));
  begin = tesk_audio::MonotonicNow() + 20'000'000;
  for (std::thread& spinner : spinners) spinner.join();
  return isGranted;
}

// A thread of the same priority as the render thread that does not give way lets it wait, and the server's
// thread, which stands just above, asks on.
TEST(StarvedOutput, WithEveryProcessorTakenItGoesOnWithTheNextFrame) {
  const JackServer server({.periodFrames = kPeriod, .priority = 70});
  Tape tape;
  Stage stage(server.GetName());
  constexpr int kRenderPriority = 64;
  stage.Play();
  const auto passes = [&](std::size_t frames) {
    const std::size_t before = tape.GetCount();
    return Await([&] { return tape.GetCount() > before + frames; });
  };
  // Behind the moment in which the render thread has learnt of the server's.
  ASSERT_TRUE(passes(20'000));
  const long long before = stage.output.GetUnderrunFrames();
  int taken = 0;
  for (int round = 0; round < 5; ++round) {
    // Without real time nobody can take every processor: whatever is missed then is in its place as well.
    if (SpinEverywhere(kRenderPriority, std::chrono::milliseconds(100))) ++taken;
    ASSERT_TRUE(passes(10'000));
  }
  if (taken > 0) {
    EXPECT_GT(stage.output.GetUnderrunFrames(), before + taken * 1'000) << "a hundred milliseconds each time";
  }
  ASSERT_TRUE(Await([&] { return tape.Sounds(); }));
  stage.Pause();
  ASSERT_TRUE(Await([&] { return !tape.Sounds(); }));
  EXPECT_TRUE(Await([&] { return stage.output.GetElapsedSampleCount() == tape.GetSounding(); }))
      << "where the listener is";
  ExpectTheSongWithSilences(tape.GetFrames(), stage.output.GetUnderrunFrames());
  EXPECT_EQ(stage.changes.losses, 0) << "nothing of it is the device's fault";
}

}  // namespace
