// How long does a song of four minutes take to decode into memory, beside the plain library's decoding of the
// same file into memory, one after the other in the same run; and eight songs at once?
#include <benchmark/benchmark.h>
#include <sndfile.h>
#include <sys/resource.h>

#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/show_on_disk.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/create.h"

namespace {

using Clock = std::chrono::steady_clock;
using Content = std::unique_ptr<tesk_audio::AudioSampleContent>;

constexpr int kSongsAtOnce = 8;

struct Cost {
  double seconds = 0.0;
  double cpu = 0.0;
};

double CpuSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Cost Measure(const std::function<void()>& work) {
  const double cpu = CpuSeconds();
  const auto start = Clock::now();
  work();
  return {std::chrono::duration<double>(Clock::now() - start).count(), CpuSeconds() - cpu};
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

std::vector<float> DecodeWithTheLibrary(const std::string& path) {
  SF_INFO info{};
  SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
  std::vector<float> samples(static_cast<std::size_t>(info.frames) * 2);
  sf_count_t done = 0;
  while (done < info.frames) {
    const sf_count_t got =
        sf_readf_float(file, samples.data() + done * 2, std::min<sf_count_t>(8192, info.frames - done));
    if (got <= 0) break;
    done += got;
  }
  sf_close(file);
  return samples;
}

Content Decode(const std::string& path) {
  return Content(tesk_audio::CreateAudioSampleContent(path, ""));
}

bool SameBits(const std::vector<float>& library, const tesk_audio::AudioSampleContent& content) {
  long long count = content.GetSampleCount();
  std::vector<float> samples(static_cast<std::size_t>(count) * 2);
  content.Read(0, &count, samples.data());
  return samples.size() == library.size() &&
         std::memcmp(samples.data(), library.data(), samples.size() * sizeof(float)) == 0;
}

// The most that the process has occupied since ForgetPeak.
double PeakMiB() {
  std::ifstream status("/proc/self/status");
  std::string word;
  double kilobytes = 0.0;
  while (status >> word) {
    if (word == "VmHWM:") status >> kilobytes;
  }
  return kilobytes / 1024.0;
}

void ForgetPeak() {
  std::ofstream("/proc/self/clear_refs") << 5;
}

double ResidentMiB() {
  long long pages = 0;
  long long resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return static_cast<double>(resident * ::sysconf(_SC_PAGESIZE)) / (1 << 20);
}

void Song(benchmark::State& state, const std::string& format) {
  const std::string path = orbel_benchmarks::FourMinutes(format);
  if (!SameBits(DecodeWithTheLibrary(path), *Decode(path)))
    return state.SkipWithError("not the library's bits");
  std::vector<double> ratios;
  std::vector<double> cpuRatios;
  std::vector<double> libraryTimes;
  double memory = 0.0;
  double peak = 0.0;
  for (auto _ : state) {
    const Cost library = Measure([&] { benchmark::DoNotOptimize(DecodeWithTheLibrary(path)); });
    const double before = ResidentMiB();
    ForgetPeak();
    Content content;
    const Cost ours = Measure([&] { content = Decode(path); });
    memory = ResidentMiB() - before;
    peak = PeakMiB() - before;
    state.SetIterationTime(ours.seconds);
    ratios.push_back(library.seconds / ours.seconds);
    cpuRatios.push_back(ours.cpu / library.cpu);
    libraryTimes.push_back(library.seconds);
  }
  state.counters["library_s"] = Median(libraryTimes);
  state.counters["library/ours"] = Median(ratios);
  state.counters["cpu_ours/library"] = Median(cpuRatios);
  state.counters["MiB_a_minute"] = memory / 4.0;
  state.counters["MiB_more_while_loading"] = peak - memory;
}

// Against the sum that the plain library needs for as many, one after the other.
void EightSongs(benchmark::State& state, const std::string& format) {
  const std::string path = orbel_benchmarks::FourMinutes(format);
  std::vector<double> shares;
  for (auto _ : state) {
    double serial = 0.0;
    for (int index = 0; index < kSongsAtOnce; ++index) {
      serial += Measure([&] { benchmark::DoNotOptimize(DecodeWithTheLibrary(path)); }).seconds;
    }
    const Cost ours = Measure([&] {
      std::vector<std::thread> loaders;
      for (int index = 0; index < kSongsAtOnce; ++index) {
        loaders.emplace_back([&] { benchmark::DoNotOptimize(Decode(path)); });
      }
      for (std::thread& loader : loaders) loader.join();
    });
    state.SetIterationTime(ours.seconds);
    shares.push_back(ours.seconds / serial);
  }
  state.counters["ours/library_sum"] = Median(shares);
}

void Settings(benchmark::internal::Benchmark* benchmark) {
  benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}
BENCHMARK_CAPTURE(Song, OggVorbis, "ogg")->Apply(Settings)->Iterations(15);
BENCHMARK_CAPTURE(Song, Flac, "flac")->Apply(Settings)->Iterations(15);
BENCHMARK_CAPTURE(Song, Wav, "wav")->Apply(Settings)->Iterations(15);
BENCHMARK_CAPTURE(EightSongs, OggVorbis, "ogg")->Apply(Settings)->Iterations(3);
BENCHMARK_CAPTURE(EightSongs, Flac, "flac")->Apply(Settings)->Iterations(3);

}  // namespace
