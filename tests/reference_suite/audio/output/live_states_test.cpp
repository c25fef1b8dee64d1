// A host that never rests, a loader that starts what was awaited, and a device that fails now and then, with
// a player that keeps its state as the real one does. Whenever all of them rest, player and output agree on
// whether anything plays, and what says that it plays moves on; meanwhile the elapsed count never decreases,
// nor passes what was planned.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "reference_suite/audio/device/null_device.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/await.h"
#include "tests/reference_suite/audio/support/scripted_player.h"
#include "tests/support/staircase_content.h"

namespace {

using Random = std::mt19937;
using tesk_audio::DeviceLossPolicy;

constexpr long long kCaesura = 6'000;
constexpr long long kSongFrames = 20'000;

void Sleep(unsigned microseconds) {
  std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
}

unsigned Below(Random* random, unsigned limit) {
  return static_cast<unsigned>((*random)() % limit);
}

// Keeps time. At a loss it asks for nothing until that has been told.
class LossyDevice : public tesk_audio::NullDevice, private tesk_audio::DeviceCallback {
 public:
  LossyDevice() : tesk_audio::NullDevice(48000.0, 1, 64) {}
  ~LossyDevice() override { NullDevice::Stop(); }
  void SetLossListener(tesk_audio::DeviceLossListener* listener) override { listener_ = listener; }
  void Start(tesk_audio::DeviceCallback& callback) override {
    callback_ = &callback;
    NullDevice::Start(*this);
  }
  void Lose() {
    const std::lock_guard lock(asking_);
    listener_->OnDeviceLost();
  }

 private:
  void Process(float* out, std::size_t frames) noexcept override {
    const std::lock_guard lock(asking_);
    callback_->Process(out, frames);
  }

  std::mutex asking_;
  tesk_audio::DeviceCallback* callback_ = nullptr;
  tesk_audio::DeviceLossListener* listener_ = nullptr;
};

enum class PlayState { Stop, Play, Pause };

// Changes its state where the real player does: a start and the state that goes with it are one step.
class StatefulPlayer : public ScriptedPlayer {
 public:
  explicit StatefulPlayer(Songs songs) : ScriptedPlayer(std::move(songs)) {}
  void Use(tesk_audio::AudioSampleOutput* output) {
    output_ = output;
    SetOutput(output);
  }

  void Play() override {
    const std::lock_guard starting(startLock_);
    if (state_ == PlayState::Play) return;
    state_ = PlayState::Play;
    SetPlays(true);
    output_->Start();
  }
  void Pause() {
    {
      const std::lock_guard starting(startLock_);
      if (state_ != PlayState::Play) return;
      state_ = PlayState::Pause;
      SetPlays(false);
    }
    output_->Pause();
    const std::lock_guard starting(startLock_);
    if (state_ == PlayState::Play) output_->Start();
  }
  void Stop() {
    {
      const std::lock_guard starting(startLock_);
      if (state_ == PlayState::Stop) return;
    }
    output_->Stop(true);
    PlayState paused = PlayState::Pause;
    state_.compare_exchange_strong(paused, PlayState::Stop);
  }
  void Seek(long long index) {
    Refilling_([&] { SeekTo(index); });
    if (index == kCaesura && state_ == PlayState::Play) output_->Stop(false);
  }
  void Reset() {
    if (output_->GetOutputIsRunning() && !output_->Stop(true)) return;
    Refilling_([this] { RewindAndRefill(); });
  }
  void NotifyOutputHasStopped() override {
    {
      const std::lock_guard starting(startLock_);
      state_ = PlayState::Stop;
    }
    ScriptedPlayer::NotifyOutputHasStopped();
  }
  bool OnCaesuraStop() override {
    bool goesOn = false;
    Refilling_([&] { goesOn = ScriptedPlayer::OnCaesuraStop(); });
    state_ = PlayState::Pause;
    return goesOn;
  }

  PlayState State() const { return state_; }
  bool Agrees() const { return (state_ == PlayState::Play) == output_->GetOutputIsRunning(); }
  // That have begun; -1 while one is under way.
  int Refills() const {
    const int ended = ended_;
    return begun_ == ended ? ended : -1;
  }

 private:
  void Refilling_(const std::function<void()>& refill) {
    ++begun_;
    refill();
    ++ended_;
  }

  tesk_audio::AudioSampleOutput* output_ = nullptr;
  std::mutex startLock_;
  std::atomic<PlayState> state_{PlayState::Stop};
  std::atomic<int> begun_{0};
  std::atomic<int> ended_{0};
};

Songs ThreeSongs() {
  return Songs{
      {.frames = kSongFrames, .caesuras = {kCaesura}, .jumps = {{3'000, {1'000, 1'000}}}, .isAttacca = true},
      {.frames = kSongFrames, .caesuras = {900}, .isAttacca = true},
      {.frames = 3'000}};
}

class LiveStates : public testing::TestWithParam<unsigned> {
 protected:
  LiveStates() : player_(ThreeSongs()), random_(GetParam()) {
    constexpr std::array kPolicies{DeviceLossPolicy::RunOn, DeviceLossPolicy::Hold, DeviceLossPolicy::End};
    tesk_audio::OutputSettings settings;
    settings.crossfadeMs = 0.0;
    settings.fadeMs = GetParam() % 2 == 0 ? 0.0 : 3.0;
    settings.aheadMs = 8.0;
    settings.onDeviceLoss = policy_ = kPolicies[GetParam() % 3];
    output_ = std::make_unique<tesk_audio::LiveSampleOutput>(
        player_, std::unique_ptr<tesk_audio::Device>(device_), settings);
    player_.Use(output_.get());
  }
  ~LiveStates() override {
    ends_ = true;
    for (std::thread& thread : threads_) thread.join();
    player_.Stop();
  }

  // Does that over and over, and nothing while the others rest.
  void Beside(const std::function<void()>& act) {
    threads_.emplace_back([this, act, seed = static_cast<unsigned>(threads_.size()) + 1000 * GetParam()] {
      Random own(seed);
      while (!ends_) {
        if (rests_) {
          ++resting_;
          while (rests_ && !ends_) Sleep(50);
          --resting_;
        }
        act();
        Sleep(Below(&own, 10'000));
      }
    });
  }
  void WatchTheCount() {
    threads_.emplace_back([this] {
      long long last = 0;
      int lastRefills = -1;
      for (; !ends_; Sleep(50)) {
        const int refills = player_.Refills();
        const long long elapsed = output_->GetElapsedSampleCount();
        const long long planned = player_.Planned();
        if (refills == -1 || player_.Refills() != refills) continue;
        if ((refills == lastRefills && elapsed < last) || elapsed > planned) ++wrongCounts_;
        last = elapsed;
        lastRefills = refills;
      }
    });
  }
  void LoadAndFail() {
    Beside([this] {
      if (!awaited_) return;
      std::string error;
      output_->SwitchContent(content_, &error);
      player_.Play();
      awaited_ = false;
    });
    Beside([this] {
      device_->Lose();
      // The host learns of it.
      if (policy_ == DeviceLossPolicy::Hold) held_ = true;
    });
  }

  // One thing that a host does; what must not meet the loader waits for it first.
  void DoAnything() {
    if (held_.exchange(false)) player_.Pause();
    const unsigned what = Below(&random_, 14);
    done_ += " " + std::to_string(what);
    if (what == 0) return Load_();
    if (what == 1) return player_.Stop();
    if (what == 2) return ResetUntilLoaded_();
    if (what <= 4) return player_.Pause();
    while (awaited_) Sleep(50);
    if (what == 5) return player_.Seek(kCaesura);
    if (what == 6) return player_.Seek(kSongFrames - 100);
    if (what == 7) return player_.Seek(Below(&random_, kSongFrames));
    if (what == 8 && player_.State() != PlayState::Play) return output_->Idle();
    if (what == 9) player_.Seek(100);
    if (what <= 10) player_.Pause();
    player_.Play();
  }

  void ComeToRest() {
    rests_ = true;
    ASSERT_TRUE(Await([this] { return resting_ == 2; }));
    if (held_.exchange(false)) player_.Pause();
    EXPECT_TRUE(SoonHolds_([this] { return player_.Agrees(); })) << done_ << "\n" << player_.Log();
    const int refills = player_.Refills();
    const long long heard = output_->GetElapsedSampleCount();
    EXPECT_TRUE(SoonHolds_([&] {
      return player_.State() != PlayState::Play || player_.Refills() != refills ||
             output_->GetElapsedSampleCount() != heard;
    })) << "it plays nothing:"
        << done_;
    EXPECT_EQ(wrongCounts_, 0) << done_;
    done_.clear();
    player_.ClearLog();
    rests_ = false;
    ASSERT_TRUE(Await([this] { return resting_ == 0; }));
  }

  StatefulPlayer player_;
  Random random_;

 private:
  void Load_() {
    player_.Stop();
    awaited_ = true;
  }
  // What the loader has play meanwhile meets the reset at any place.
  void ResetUntilLoaded_() {
    Load_();
    while (awaited_) player_.Reset();
  }
  static bool SoonHolds_(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition() && std::chrono::steady_clock::now() < limit) Sleep(200);
    return condition();
  }

  DeviceLossPolicy policy_{};
  LossyDevice* const device_ = new LossyDevice;  // the output's
  std::unique_ptr<tesk_audio::LiveSampleOutput> output_;
  const test_support::StaircaseContent content_{10, 48000.0, 1};
  std::string done_;
  std::atomic<bool> awaited_{false};  // a song, by the player
  std::atomic<bool> held_{false};
  std::atomic<bool> ends_{false};
  std::atomic<bool> rests_{false};
  std::atomic<int> resting_{0};
  std::atomic<int> wrongCounts_{0};
  std::vector<std::thread> threads_;
};

TEST_P(LiveStates, PlayerAndOutputAgreeWheneverAllRest) {
  player_.Reset();
  WatchTheCount();
  LoadAndFail();
  for (int i = 1; i <= 300 && !HasFailure(); ++i) {
    DoAnything();
    if (Below(&random_, 3) == 0) Sleep(Below(&random_, 8'000));
    if (i % 10 == 0) ComeToRest();
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, LiveStates, testing::Range(1U, 7U));

}  // namespace
