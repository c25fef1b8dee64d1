// How long does a show take from opening it to its first frame, beside decoding its first song alone;
// switching to a neighbour that is decoded; asking what the listener hears; and telling everybody the
// position?
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Sources/audio_player/audio_player.h"
#include "benchmarks/show_on_disk.h"
#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/offline_output.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/create.h"
#include "suite/player_core/gui_update.h"
#include "suite/player_core/player.h"

namespace {

using Clock = std::chrono::steady_clock;
using orbel_benchmarks::FourMinutes;
using orbel_benchmarks::OpenOffline;
using orbel_benchmarks::ShowOnDisk;
using orbel_benchmarks::SongOnDisk;

double Seconds(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void FillShow(ShowOnDisk* show, int songs) {
  for (int number = 1; number <= songs; ++number) {
    SongOnDisk song;
    song.number = std::to_string(number);
    song.seconds = 240;
    song.tempoEvents = 50;
    song.audio = FourMinutes("ogg");
    show->Add(song);
  }
}

void ToTheFirstFrame(benchmark::State& state) {
  std::vector<double> beyond;
  for (auto _ : state) {
    // What is known of a file is remembered as long as it is that file: every time they are others.
    ShowOnDisk disk;
    FillShow(&disk, static_cast<int>(state.range(0)));
    const auto decodes = Clock::now();
    std::unique_ptr<tesk_audio::AudioSampleContent>(
        tesk_audio::CreateAudioSampleContent(FourMinutes("ogg"), ""));
    const double decoding = Seconds(decodes);
    const auto opens = Clock::now();
    const auto show = OpenOffline(disk.Path());
    show->GetPlayer()->Play();
    tesk_audio::StepReport report;
    tesk_audio::StepOfflineOutput(&report, [](const float*, std::size_t) {});
    const double opening = Seconds(opens);
    if (report.frames == 0) state.SkipWithError("no frame came");
    state.SetIterationTime(opening);
    beyond.push_back((opening - decoding) * 1000.0);
  }
  std::sort(beyond.begin(), beyond.end());
  state.counters["beyond_decoding_ms"] = beyond[beyond.size() / 2];
}
BENCHMARK(ToTheFirstFrame)
    ->ArgName("songs")
    ->Arg(1)
    ->Arg(2)
    ->Arg(60)
    ->Iterations(7)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// There and back, between two songs that are both decoded; what the call itself takes.
void SwitchToADecodedNeighbour(benchmark::State& state) {
  ShowOnDisk disk;
  FillShow(&disk, 2);
  const auto show = OpenOffline(disk.Path());
  AudioPlayer& player = *show->GetPlayer();
  player.NextSong();
  player.PreviousSong();
  while (player.IsPlaying()) player.Stop();
  bool next = true;
  for (auto _ : state) {
    if (next) {
      player.NextSong();
    } else {
      player.PreviousSong();
    }
    next = !next;
  }
}
BENCHMARK(SwitchToADecodedNeighbour)->Unit(benchmark::kMicrosecond);

class Playing : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    SongOnDisk song;
    song.seconds = 60;
    song.tempoEvents = static_cast<unsigned>(state.range(0));
    disk_ = std::make_unique<ShowOnDisk>();
    disk_->Add(song);
    show_ = OpenOffline(disk_->Path());
    show_->GetPlayer()->Play();
    // In the middle of the song, with what the reads so far have registered.
    tesk_audio::StepReport report;
    for (int read = 0; read < 5000; ++read) {
      tesk_audio::StepOfflineOutput(&report, [](const float*, std::size_t) {});
    }
  }
  void TearDown(const benchmark::State&) override {
    show_->GetPlayer()->StopAndReset();
    show_.reset();
    disk_.reset();
  }

 protected:
  std::unique_ptr<ShowOnDisk> disk_;
  std::unique_ptr<AudioPlayerWrapper> show_;
};

BENCHMARK_DEFINE_F(Playing, AudibleTick)(benchmark::State& state) {
  unsigned tick = 0;
  for (auto _ : state) benchmark::DoNotOptimize(show_->GetPlayer()->GetAudibleTickIndex(&tick));
}
BENCHMARK_DEFINE_F(Playing, PositionUpdate)(benchmark::State& state) {
  for (auto _ : state) show_->GetPlayer()->EnsureGuiIsCurrent();
}
BENCHMARK_REGISTER_F(Playing, AudibleTick)->ArgName("tempos")->Arg(1)->Arg(100)->Arg(10'000);
BENCHMARK_REGISTER_F(Playing, PositionUpdate)->ArgName("tempos")->Arg(1)->Arg(100)->Arg(10'000);

}  // namespace
