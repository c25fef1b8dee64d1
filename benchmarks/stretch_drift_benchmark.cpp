// How far do attacks wander from their places in minutes, at 1.1 times the tempo? Frames beside where they
// were after ten seconds, and how many times faster than they play.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "reference_suite/audio/output/offline_sample_output.h"
#include "tests/reference_suite/audio/support/scripted_player.h"

namespace {

constexpr double kRateHz = 48000.0;
constexpr double kScale = 1.1;
constexpr long long kDistance = 480'000;  // from attack to attack
constexpr long long kReach = 1'000;

// Keeps the loudest frame near every attack's place.
class Attacks {
 public:
  void Hear(const float* frames, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, ++at_) Hear_(std::fabs(frames[i]));
  }
  // The largest distance from where the first one lay beside its place.
  double GetWandering() const {
    double most = 0.0;
    for (const double error : errors_) most = std::max(most, std::fabs(error - errors_.front()));
    return most;
  }

 private:
  void Hear_(float size) {
    const double place = static_cast<double>(next_ * kDistance) / kScale;
    const double beside = static_cast<double>(at_) - place;
    if (beside < -kReach) return;
    if (size > loudest_) {
      loudest_ = size;
      error_ = beside;
    }
    if (beside < kReach) return;
    errors_.push_back(error_);
    loudest_ = 0.0F;
    ++next_;
  }

  long long at_ = 0;
  long long next_ = 1;
  float loudest_ = 0.0F;
  double error_ = 0.0;
  std::vector<double> errors_;
};

void Drift(benchmark::State& state, tesk_audio::StretchQuality quality) {
  const long long frames = state.range(0) * 60 * 48'000;
  auto sound = std::make_shared<std::vector<float>>(static_cast<std::size_t>(frames));
  for (long long at = kDistance; at < frames; at += kDistance) (*sound)[static_cast<std::size_t>(at)] = 0.9F;
  for (auto _ : state) {
    ScriptedPlayer player(Songs{{.frames = frames, .scales = {{0, kScale}}, .sound = sound}}, 1);
    tesk_audio::OutputSettings settings;
    settings.device = tesk_audio::DeviceKind::Offline;
    settings.stretch = quality;
    settings.fadeMs = 0.0;
    tesk_audio::OfflineSampleOutput output(player, kRateHz, 1, settings);
    player.SetOutput(&output);
    player.RewindAndRefill();
    player.SetPlays(true);
    output.Start();
    Attacks attacks;
    tesk_audio::StepReport report;
    while (output.Step(&report, [&](const float* heard, std::size_t count) { attacks.Hear(heard, count); })) {
    }
    state.counters["wandered_frames"] = attacks.GetWandering();
    player.SetOutput(nullptr);
  }
  const double seconds = static_cast<double>(frames) / (kRateHz * kScale);
  state.counters["times_real_time"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
}

void Faster(benchmark::State& state) {
  Drift(state, tesk_audio::StretchQuality::Faster);
}
void Finer(benchmark::State& state) {
  Drift(state, tesk_audio::StretchQuality::Finer);
}

// Minutes.
BENCHMARK(Faster)->Arg(10)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(Finer)->Arg(10)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
