// Many commands in any order from several threads, on a device that runs in real time and on one that runs as
// fast as it can. Whatever happens, only frames of the song are heard, in order, with no more breaks than
// there were reasons for one.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <random>
#include <thread>

#include "reference_suite/audio/device/null_device.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/live_run.h"
#include "tests/support/staircase_content.h"

namespace {

constexpr long long kSongFrames = 200'000;

// The null device, and what it took, up to a limit.
class RecordingDevice : public tesk_audio::NullDevice, private tesk_audio::DeviceCallback {
 public:
  RecordingDevice() : tesk_audio::NullDevice(48000.0, 1, 128) { heard_.reserve(10'000'000); }
  ~RecordingDevice() override { NullDevice::Stop(); }

  void Start(tesk_audio::DeviceCallback& callback) override {
    callback_ = &callback;
    NullDevice::Start(*this);
  }

  // After Stop.
  const std::vector<float>& Heard() const { return heard_; }

 private:
  void Process(float* out, std::size_t frames) noexcept override {
    callback_->Process(out, frames);
    for (std::size_t i = 0; i < frames && heard_.size() < heard_.capacity(); ++i) {
      if (out[i] != 0.0F) heard_.push_back(out[i]);
    }
  }

  tesk_audio::DeviceCallback* callback_ = nullptr;
  std::vector<float> heard_;
};

struct Commands {
  int breaks = 0;  // that were asked for
};

// A host that cannot make up its mind.
Commands Drive(ScriptedPlayer* player, tesk_audio::AudioSampleOutput* output, int count, unsigned seed) {
  Commands done;
  std::mt19937 random(seed);
  const test_support::StaircaseContent content(10, 48000.0, 1);
  std::string error;
  player->RewindAndRefill();
  for (int i = 0; i < count; ++i) {
    const unsigned what = static_cast<unsigned>(random() % 10);
    if (what <= 2) player->Play();
    if (what == 3) {
      player->SetPlays(false);
      output->Pause();
    }
    if (what == 4) {
      EXPECT_TRUE(output->Stop(true));
    }
    if (what == 5) output->Stop(false);
    if (what == 6 || what == 7) {
      ++done.breaks;
      player->SeekTo(static_cast<long long>(random()) % kSongFrames);
    }
    if (what == 8 && !output->GetOutputIsRunning()) {
      EXPECT_TRUE(output->Stop(true));
      player->SetPlays(false);
      output->Idle();
      done.breaks += 3;  // the loop is armed again as well
      player->RewindAndRefill();
    }
    if (what == 9) {
      ++done.breaks;
      EXPECT_TRUE(output->SwitchContent(content, &error)) << error;
    }
    if (random() % 4 == 0) std::this_thread::sleep_for(std::chrono::microseconds(random() % 3'000));
  }
  EXPECT_TRUE(output->Stop(true));
  return done;
}

// Polls what the display polls until told to end.
class Display {
 public:
  explicit Display(tesk_audio::AudioSampleOutput* output)
      : thread_([this, output] {
          while (!ends_) {
            isWrong_ = isWrong_ || output->GetElapsedSampleCount() < 0;
            output->GetOutputIsRunning();
            std::this_thread::sleep_for(std::chrono::microseconds(100));
          }
        }) {}
  ~Display() {
    ends_ = true;
    thread_.join();
    EXPECT_FALSE(isWrong_);
  }
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

 private:
  std::atomic<bool> ends_{false};
  std::atomic<bool> isWrong_{false};
  std::thread thread_;
};

Songs StressSong() {
  Songs songs{
      {.frames = kSongFrames, .caesuras = {3'000, 40'000, 150'000}, .jumps = {{60'000, {55'000, 55'000}}}}};
  return songs;
}

// Counts the places at which the next frame is not the one that follows.
int Breaks(const std::vector<float>& heard) {
  int breaks = 0;
  for (std::size_t i = 0; i < heard.size(); ++i) {
    const float sample = heard[i];
    EXPECT_EQ(sample, std::floor(sample));
    EXPECT_GE(sample, ScriptedPlayer::Sample(0));
    EXPECT_LE(sample, ScriptedPlayer::Sample(kSongFrames));
    if (i > 0 && sample != heard[i - 1] + 1.0F) ++breaks;
  }
  return breaks;
}

class LiveStress : public testing::TestWithParam<unsigned> {};

TEST_P(LiveStress, OnAFreeDeviceOnlyWhatWasAskedForIsHeard) {
  LiveRun run(StressSong());
  run.device->Spin(true);
  Commands done;
  {
    const Display display(run.output.get());
    done = Drive(&run.player, run.output.get(), 300, GetParam());
  }
  run.output->PrepareForExit();
  const std::vector<float> heard = run.device->Heard();
  EXPECT_LE(Breaks(heard), done.breaks + 2) << heard.size();
}

// An output on the device that keeps time without sound, without fades. The device has all the time there is
// to obey a stop: the machine may stand still.
struct NullRun {
  explicit NullRun(Songs songs)
      : player(std::move(songs)),
        output(player, std::unique_ptr<tesk_audio::Device>(device), Bare(), [] { return 0LL; }) {
    player.SetOutput(&output);
  }
  static tesk_audio::OutputSettings Bare() {
    tesk_audio::OutputSettings settings;
    settings.crossfadeMs = settings.fadeMs = 0.0;
    return settings;
  }

  ScriptedPlayer player;
  RecordingDevice* const device = new RecordingDevice;  // the output's
  tesk_audio::LiveSampleOutput output;
};

TEST_P(LiveStress, OnTheNullDeviceOnlyWhatWasAskedForIsHeard) {
  NullRun run(StressSong());
  Commands done;
  {
    const Display display(&run.output);
    done = Drive(&run.player, &run.output, 300, GetParam());
  }
  run.output.PrepareForExit();
  EXPECT_LE(Breaks(run.device->Heard()), done.breaks + 2) << run.device->Heard().size();
}

INSTANTIATE_TEST_SUITE_P(Seeds, LiveStress, testing::Values(1U, 2U, 3U));

TEST(LiveNullDevice, PlaysASongInRealTime) {
  NullRun run(Songs{{.frames = 24'000, .jumps = {{12'000, {6'000}}}}});
  run.player.RewindAndRefill();
  const auto start = std::chrono::steady_clock::now();
  run.player.Play();
  ASSERT_TRUE(Await([&] { return run.player.HasStopped(); }));
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  EXPECT_GE(time.count(), 0.6) << "30 000 frames, less a period at each end";
  run.output.PrepareForExit();
  EXPECT_EQ(run.device->Heard().size(), 30'000U);
  EXPECT_EQ(Breaks(run.device->Heard()), 1);
  EXPECT_EQ(run.output.GetElapsedSampleCount(), 30'000);
}

TEST(LiveNullDevice, TheElapsedCountNeverDecreasesWhilePlayingAndNeverPassesWhatWasPlanned) {
  ScriptedPlayer player(Songs{{.frames = 1'000'000}});
  tesk_audio::OutputSettings settings;
  tesk_audio::LiveSampleOutput output(player, std::make_unique<tesk_audio::NullDevice>(48000.0, 1, 64),
                                      settings);
  player.SetOutput(&output);
  player.RewindAndRefill();
  player.Play();
  long long last = 0;
  int seeks = 0;
  // However far it plays between two looks.
  while (last < 20'000 || seeks < 5) {
    const long long elapsed = output.GetElapsedSampleCount();
    ASSERT_GE(elapsed, last);
    ASSERT_LE(elapsed, player.Planned());
    if (elapsed > (seeks + 1) * 2'000) {
      player.SeekTo(++seeks * 50'000);
    }
    last = elapsed;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  output.Stop(true);
}

}  // namespace
