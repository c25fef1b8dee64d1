// How long does one whole read of 264 frames take (plan it, execute what is due, copy the frames, move on),
// by the numbers of tempo changes and of cues: the median, the slowest in a thousand, the slowest, and what
// share of the time that the frames play that is?
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

#include "Sources/audio_player/audio_player.h"
#include "benchmarks/show_on_disk.h"
#include "exc/lock/scope_lock.h"
#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/offline_output.h"
#include "suite/audio/output_interface.h"
#include "suite/player_core/player.h"

namespace {

using Clock = std::chrono::steady_clock;

class Reads : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    disk_ = std::make_unique<orbel_benchmarks::ShowOnDisk>();
    orbel_benchmarks::SongOnDisk song;
    song.seconds = 60;
    song.tempoEvents = static_cast<unsigned>(state.range(0));
    song.cues = static_cast<unsigned>(state.range(1));
    disk_->Add(song);
    show_ = orbel_benchmarks::OpenOffline(disk_->Path());
    show_->GetPlayer()->Play();
    times_.clear();
  }
  void TearDown(const benchmark::State&) override {
    show_->GetPlayer()->StopAndReset();
    show_.reset();
    disk_.reset();
  }

 protected:
  void Again_() {
    show_->GetPlayer()->StopAndReset();
    show_->GetPlayer()->Play();
  }
  void Note_(benchmark::State& state, Clock::duration time) {
    state.SetIterationTime(std::chrono::duration<double>(time).count());
    times_.push_back(std::chrono::duration<double, std::micro>(time).count());
  }
  void Report_(benchmark::State& state, double framesOfARead) {
    std::sort(times_.begin(), times_.end());
    const double median = orbel_benchmarks::Percentile(times_, 0.5);
    state.counters["median_us"] = median;
    state.counters["p99.9_us"] = orbel_benchmarks::Percentile(times_, 0.999);
    state.counters["longest_us"] = times_.back();
    state.counters["share_%"] = median / (framesOfARead * 1e6 / orbel_benchmarks::kRate) * 100.0;
  }

  std::unique_ptr<orbel_benchmarks::ShowOnDisk> disk_;
  std::unique_ptr<AudioPlayerWrapper> show_;
  std::vector<double> times_;
};

BENCHMARK_DEFINE_F(Reads, WholeStep)(benchmark::State& state) {
  tesk_audio::StepReport report;
  for (auto _ : state) {
    const auto start = Clock::now();
    const bool ran = tesk_audio::StepOfflineOutput(&report, [](const float*, std::size_t) {});
    Note_(state, Clock::now() - start);
    if (!ran || report.event == tesk_audio::StepEvent::End) Again_();
  }
  Report_(state, 264.0);
}

// What an output asks of the engine and no more: plan, read and advance.
BENCHMARK_DEFINE_F(Reads, PlanReadAdvance)(benchmark::State& state) {
  tesk_audio::AudioPlayerOutputInterface& player = *show_->GetPlayer();
  const long long request = state.range(2);
  std::vector<float> frames(static_cast<std::size_t>(request) * 2);
  for (auto _ : state) {
    const auto start = Clock::now();
    tesk_audio::SampleCount count(0, 1.0L);
    {
      exc::ScopeLock lock(player.GetReadSamplesLock());
      count = player.GetNextReadSampleCount(tesk_audio::SampleCount(request, 1.0L));
      if (count.GetUnscaled() > 0) player.ReadSamples(&count, frames.data());
    }
    Note_(state, Clock::now() - start);
    if (count.GetUnscaled() == 0) Again_();
  }
  Report_(state, static_cast<double>(request));
}

constexpr int kReads = 20'000;
BENCHMARK_REGISTER_F(Reads, WholeStep)
    ->ArgNames({"tempos", "cues"})
    ->ArgsProduct({{1, 100, 10'000}, {0, 100}})
    ->Iterations(kReads)
    ->UseManualTime();
BENCHMARK_REGISTER_F(Reads, PlanReadAdvance)
    ->ArgNames({"tempos", "cues", "frames"})
    ->ArgsProduct({{1, 100, 10'000}, {0, 100}, {64, 264}})
    ->Iterations(kReads)
    ->UseManualTime();

}  // namespace
