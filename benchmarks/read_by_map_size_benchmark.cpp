// How long does one whole read take (plan it, execute what is due, copy the frames), by the number of tempo
// changes?
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/offline_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "reference_suite/midi/standard_midi_file/smf_writer.h"
#include "suite/player_core/player.h"

namespace {

constexpr unsigned kTicksPerChange = 48;  // a tenth of a quarter note
constexpr unsigned kRate = 44100;
constexpr unsigned kSeconds = 30;

void Append(std::string* out, std::uint32_t value, int bytes) {
  for (int index = 0; index < bytes; ++index) *out += static_cast<char>(value >> (8 * index));
}

// Stereo silence, 16 bits.
std::string Wav() {
  const std::uint32_t bytes = kSeconds * kRate * 4;
  std::string out = "RIFF";
  Append(&out, 36 + bytes, 4);
  out += "WAVEfmt ";
  Append(&out, 16, 4);
  Append(&out, 1, 2);
  Append(&out, 2, 2);
  Append(&out, kRate, 4);
  Append(&out, kRate * 4, 4);
  Append(&out, 4, 2);
  Append(&out, 16, 2);
  out += "data";
  Append(&out, bytes, 4);
  return out + std::string(bytes, '\0');
}

// A show with one song on disk, played through the offline output.
class Reads : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    folder_ = std::filesystem::temp_directory_path() / ("orbel_benchmark_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder_ / "songs");
    std::filesystem::create_directories(folder_ / "data");
    tesk_midi::SmfWriter midi(480);
    for (long index = 0; index < state.range(0); ++index) {
      midi.Tempo(static_cast<unsigned>(index) * kTicksPerChange, 500'000 + static_cast<unsigned>(index % 2));
    }
    midi.End(kSeconds * 960);
    const auto bytes = midi.Bytes();
    std::ofstream(folder_ / "songs" / "1 Song.mid", std::ios::binary)
        << std::string(bytes.begin(), bytes.end());
    std::ofstream(folder_ / "data" / "1 Song.obd", std::ios::binary) << Wav();
    tesk_audio::OutputSettings settings;
    settings.device = tesk_audio::DeviceKind::Offline;
    tesk_audio::ConfigureOutput(settings);
    show_ = std::make_unique<AudioPlayerWrapper>(folder_.string(), "");
    show_->GetPlayer()->Play();
  }
  void TearDown(const benchmark::State&) override {
    show_->GetPlayer()->StopAndReset();
    show_.reset();
    std::filesystem::remove_all(folder_);
  }

 protected:
  std::filesystem::path folder_;
  std::unique_ptr<AudioPlayerWrapper> show_;
};

BENCHMARK_DEFINE_F(Reads, OneAfterTheOther)(benchmark::State& state) {
  long long frames = 0;
  tesk_audio::StepReport report;
  for (auto _ : state) {
    const bool ran = tesk_audio::StepOfflineOutput(&report, [](const float*, std::size_t) {});
    frames += report.frames;
    if (ran && report.event != tesk_audio::StepEvent::End) continue;
    state.PauseTiming();
    show_->GetPlayer()->StopAndReset();
    show_->GetPlayer()->Play();
    state.ResumeTiming();
  }
  state.counters["times_real_time"] =
      benchmark::Counter(static_cast<double>(frames) / kRate, benchmark::Counter::kIsRate);
}
BENCHMARK_REGISTER_F(Reads, OneAfterTheOther)->Arg(1)->Arg(10)->Arg(100)->Arg(500);

}  // namespace
