// How long does a render step take with and without the stretcher, beside the library doing the same blocks
// by itself? By frames that a device takes at a time; 1.1 times the tempo and 2 semitones higher; and at six
// tenths of the tempo, where both engines begin anew at every beat.
#include <benchmark/benchmark.h>
#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <vector>

#include "reference_suite/audio/output/offline_sample_output.h"
#include "tests/reference_suite/audio/support/scripted_player.h"

namespace {

using Clock = std::chrono::steady_clock;
using Stretcher = RubberBand::RubberBandStretcher;

constexpr double kRateHz = 48000.0;
constexpr unsigned kChannels = 2;
constexpr long long kSongFrames = 48'000 * 60;

// Every frame another: a few sines and a beat.
std::shared_ptr<const std::vector<float>> Music() {
  auto sound = std::make_shared<std::vector<float>>(kSongFrames);
  for (std::size_t i = 0; i < sound->size(); ++i) {
    const double time = static_cast<double>(i) / kRateHz;
    const double beat = std::exp(-20.0 * std::fmod(time, 0.5));
    const double sum = std::sin(690.0 * time) + std::sin(1380.0 * time) + std::sin(2070.0 * time);
    (*sound)[i] = static_cast<float>(0.1 * sum + 0.3 * beat * std::sin(300.0 * time));
  }
  return sound;
}

// Collects how long each block took.
class Blocks {
 public:
  explicit Blocks(long long frames) : seconds_(static_cast<double>(frames) / kRateHz) {}

  void Begin() { start_ = Clock::now(); }
  void End() { times_.push_back(std::chrono::duration<double>(Clock::now() - start_).count()); }

  void Report(benchmark::State& state) {
    if (times_.empty()) return;
    std::sort(times_.begin(), times_.end());
    double sum = 0.0;
    for (const double time : times_) sum += time;
    const auto at = [this](double part) {
      return times_[static_cast<std::size_t>(part * static_cast<double>(times_.size() - 1))] * 1e6;
    };
    state.counters["median_us"] = at(0.5);
    state.counters["p99.9_us"] = at(0.999);
    state.counters["longest_us"] = at(1.0);
    state.counters["share_of_real_time"] = sum / (seconds_ * static_cast<double>(times_.size()));
    const auto over = std::count_if(times_.begin(), times_.end(), [this](double t) { return t > seconds_; });
    state.counters["over_budget"] = static_cast<double>(over);
  }

 private:
  double seconds_;
  Clock::time_point start_;
  std::vector<double> times_;
};

// Pulls periods out of the offline output, which renders whole reads, as the ring's device does.
void RenderSteps(benchmark::State& state, double scale, int semitones, tesk_audio::StretchQuality quality) {
  const long long period = state.range(0);
  ScriptedPlayer player(Songs{{.frames = kSongFrames,
                               .scales = {{0, scale}},
                               .transpositions = {{0, semitones}},
                               .sound = Music()}},
                        kChannels);
  tesk_audio::OutputSettings settings;
  settings.device = tesk_audio::DeviceKind::Offline;
  settings.stretch = quality;
  tesk_audio::OfflineSampleOutput output(player, kRateHz, kChannels, settings);
  player.SetOutput(&output);
  Blocks blocks(period);
  long long ready = 0;
  for (auto _ : state) {
    if (!output.GetOutputIsRunning()) {
      player.RewindAndRefill();
      player.SetPlays(true);
      output.Start();
    }
    blocks.Begin();
    tesk_audio::StepReport report;
    while (ready < period && output.Step(&report, [&](const float* frames, std::size_t count) {
      benchmark::DoNotOptimize(frames);
      ready += static_cast<long long>(count);
    })) {
    }
    blocks.End();
    ready = std::max(0LL, ready - period);
  }
  blocks.Report(state);
}

void AsRecorded(benchmark::State& state) {
  RenderSteps(state, 1.0, 0, tesk_audio::StretchQuality::Faster);
}
void Faster(benchmark::State& state) {
  RenderSteps(state, 1.1, 2, tesk_audio::StretchQuality::Faster);
}
void Finer(benchmark::State& state) {
  RenderSteps(state, 1.1, 2, tesk_audio::StretchQuality::Finer);
}

void FasterAtSixTenths(benchmark::State& state) {
  RenderSteps(state, 0.6, 0, tesk_audio::StretchQuality::Faster);
}
void FinerAtSixTenths(benchmark::State& state) {
  RenderSteps(state, 0.6, 0, tesk_audio::StretchQuality::Finer);
}

void BareLibrary(benchmark::State& state, int engine) {
  const long long period = state.range(0);
  const auto music = Music();
  Stretcher stretcher(static_cast<std::size_t>(kRateHz), kChannels,
                      engine | Stretcher::OptionProcessRealTime | Stretcher::OptionThreadingNever |
                          Stretcher::OptionPitchHighSpeed | Stretcher::OptionChannelsTogether,
                      1.0 / 1.1, std::exp2(2.0 / 12.0));
  stretcher.setMaxProcessSize(8192);
  std::vector<float> left(8192);
  std::vector<float> right(8192);
  float* planes[] = {left.data(), right.data()};
  Blocks blocks(period);
  std::size_t at = 0;
  for (auto _ : state) {
    blocks.Begin();
    while (stretcher.available() < static_cast<int>(period)) {
      const std::size_t count = std::max<std::size_t>(stretcher.getSamplesRequired(), 1);
      if (at + count > music->size()) at = 0;
      std::copy_n(music->data() + at, count, left.data());
      std::copy_n(music->data() + at, count, right.data());
      at += count;
      stretcher.process(planes, count, false);
    }
    stretcher.retrieve(planes, static_cast<std::size_t>(period));
    benchmark::DoNotOptimize(left.data());
    blocks.End();
  }
  blocks.Report(state);
}

void BareFaster(benchmark::State& state) {
  BareLibrary(state, Stretcher::OptionEngineFaster);
}
void BareFiner(benchmark::State& state) {
  BareLibrary(state, Stretcher::OptionEngineFiner);
}

BENCHMARK(AsRecorded)->Arg(64)->Arg(128)->Arg(256)->Iterations(10'000);
BENCHMARK(Faster)->Arg(64)->Arg(128)->Arg(256)->Iterations(10'000);
BENCHMARK(BareFaster)->Arg(64)->Arg(128)->Arg(256)->Iterations(10'000);
BENCHMARK(Finer)->Arg(64)->Arg(128)->Arg(256)->Iterations(10'000);
BENCHMARK(BareFiner)->Arg(64)->Arg(128)->Arg(256)->Iterations(10'000);
BENCHMARK(FasterAtSixTenths)->Arg(64)->Arg(128)->Arg(256)->Iterations(10'000);
BENCHMARK(FinerAtSixTenths)->Arg(64)->Arg(128)->Arg(256)->Iterations(10'000);

}  // namespace
