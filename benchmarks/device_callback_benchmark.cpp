// How much of its period does the device's callback take, while the render thread beside it plays as recorded
// or stretched? Beside it, in the same run, how late this machine wakes the thread that calls it, and what it
// charges the thread with for nothing but copying as many frames out of memory that another has written.
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "reference_suite/audio/output/live_sample_output.h"
#include "tests/reference_suite/audio/support/scripted_player.h"

namespace {

constexpr double kRateHz = 48000.0;
constexpr unsigned kChannels = 2;

double Seconds(clockid_t clock) {
  timespec now{};
  ::clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void SleepUntil(double seconds) {
  const double whole = std::floor(seconds);
  const timespec until{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
  ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

// What every period took, in seconds.
struct Periods {
  std::vector<double> cpu;
  std::vector<double> bare;
  std::vector<double> wall;
  std::vector<double> lateness;
};

// Asks for a period on time, on a real-time thread where the system grants one.
class PacedDevice : public tesk_audio::Device {
 public:
  PacedDevice(unsigned period, std::size_t count, Periods* periods)
      : period_(period),
        count_(count),
        periods_(periods),
        written_(std::size_t{1} << 18),
        frames_(std::size_t{period} * kChannels) {}
  ~PacedDevice() override { PacedDevice::Stop(); }

  double GetRateHz() const override { return kRateHz; }
  unsigned GetChannelCount() const override { return kChannels; }
  unsigned GetPeriodFrames() const override { return period_; }
  unsigned GetLatencyFrames() const override { return 0; }
  std::string GetDescription() const override { return "paced device"; }
  bool HasFailed() const override { return false; }
  void Start(tesk_audio::DeviceCallback& callback) override {
    thread_ = std::thread([this, &callback] { Run_(callback); });
    const sched_param priority{70};
    ::pthread_setschedparam(thread_.native_handle(), SCHED_FIFO, &priority);
  }
  void Stop() override {
    stops_ = true;
    if (thread_.joinable()) thread_.join();
  }

 private:
  // Woken as for the callback, half a period beside it: neither finds what the other has left in the caches.
  void CopyBare_(double due) {
    SleepUntil(due);
    place_ = (place_ + frames_.size()) % (written_.size() - frames_.size());
    const double cpu = Seconds(CLOCK_THREAD_CPUTIME_ID);
    std::copy_n(written_.data() + place_, frames_.size(), frames_.data());
    const double cpuAfter = Seconds(CLOCK_THREAD_CPUTIME_ID);
    if (periods_->bare.size() < count_) periods_->bare.push_back(cpuAfter - cpu);
  }

  void Run_(tesk_audio::DeviceCallback& callback) {
    const double period = static_cast<double>(period_) / kRateHz;
    double due = Seconds(CLOCK_MONOTONIC);
    while (!stops_) {
      due += period;
      CopyBare_(due - 0.5 * period);
      SleepUntil(due);
      const double woken = Seconds(CLOCK_MONOTONIC);
      const double cpu = Seconds(CLOCK_THREAD_CPUTIME_ID);
      callback.Process(frames_.data(), period_);
      const double cpuAfter = Seconds(CLOCK_THREAD_CPUTIME_ID);
      if (periods_->cpu.size() == count_) continue;
      periods_->wall.push_back(Seconds(CLOCK_MONOTONIC) - woken);
      periods_->cpu.push_back(cpuAfter - cpu);
      periods_->lateness.push_back(woken - due);
    }
  }

  unsigned period_;
  std::size_t count_;
  Periods* periods_;
  std::vector<float> written_;  // by the thread that made this
  std::vector<float> frames_;
  std::size_t place_ = 0;
  std::thread thread_;
  std::atomic<bool> stops_{false};
};

double At(std::vector<double>& values, double part) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))] * 1e6;
}

void Plays(benchmark::State& state, double scale, int semitones, tesk_audio::StretchQuality quality) {
  const auto period = static_cast<unsigned>(state.range(0));
  const double seconds = static_cast<double>(period) / kRateHz;
  // So many that the 99.9th percentile is more than the worst of them.
  constexpr std::size_t count = 10'000;
  Periods periods;
  for (auto* each : {&periods.cpu, &periods.bare, &periods.wall, &periods.lateness}) each->reserve(count);
  long long underrun = 0;
  for (auto _ : state) {
    ScriptedPlayer player(
        Songs{{.frames = 48'000 * 3'600, .scales = {{0, scale}}, .transpositions = {{0, semitones}}}},
        kChannels);
    tesk_audio::OutputSettings settings;
    settings.stretch = quality;
    tesk_audio::LiveSampleOutput output(player, std::make_unique<PacedDevice>(period, count, &periods),
                                        settings);
    player.SetOutput(&output);
    player.RewindAndRefill();
    player.SetPlays(true);
    output.Start();
    SleepUntil(Seconds(CLOCK_MONOTONIC) + 0.5 + seconds * static_cast<double>(count));
    underrun = output.GetUnderrunFrames();
    output.PrepareForExit();
    player.SetOutput(nullptr);
  }
  double sum = 0.0;
  for (const double each : periods.cpu) sum += each;
  const auto over = [&](const std::vector<double>& values) {
    return static_cast<double>(
        std::count_if(values.begin(), values.end(), [&](double t) { return t > seconds; }));
  };
  state.counters["over_budget"] = over(periods.wall);
  state.counters["woken_late_by_a_period"] = over(periods.lateness);
  state.counters["cpu_share"] = sum / (seconds * static_cast<double>(periods.cpu.size()));
  state.counters["cpu_median_us"] = At(periods.cpu, 0.5);
  state.counters["cpu_p99.9_us"] = At(periods.cpu, 0.999);
  state.counters["cpu_longest_us"] = At(periods.cpu, 1.0);
  state.counters["bare_cpu_median_us"] = At(periods.bare, 0.5);
  state.counters["bare_cpu_p99.9_us"] = At(periods.bare, 0.999);
  state.counters["lateness_median_us"] = At(periods.lateness, 0.5);
  state.counters["lateness_p99.9_us"] = At(periods.lateness, 0.999);
  state.counters["lateness_longest_us"] = At(periods.lateness, 1.0);
  state.counters["underrun_frames"] = static_cast<double>(underrun);
}

void AsRecorded(benchmark::State& state) {
  Plays(state, 1.0, 0, tesk_audio::StretchQuality::Faster);
}
void Faster(benchmark::State& state) {
  Plays(state, 1.1, 2, tesk_audio::StretchQuality::Faster);
}
void Finer(benchmark::State& state) {
  Plays(state, 1.1, 2, tesk_audio::StretchQuality::Finer);
}

BENCHMARK(AsRecorded)->Arg(64)->Arg(128)->Arg(256)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(Faster)->Arg(64)->Arg(128)->Arg(256)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(Finer)->Arg(64)->Arg(128)->Arg(256)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
