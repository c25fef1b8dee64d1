#include "host/demo/bench_show.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "host/demo/written_file.h"
#include "reference_suite/midi/standard_midi_file/smf_writer.h"

namespace orbel::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr unsigned kBars = 16;
constexpr unsigned kDivision = 480;
constexpr std::uint32_t kRate = 48'000;
constexpr std::uint32_t kFrames = kBars * kRate / 4;

Bytes BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

void Append(Bytes* bytes, std::string_view text) {
  for (const char letter : text) bytes->push_back(static_cast<std::uint8_t>(letter));
}

// The lowest byte first.
void Append(Bytes* bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes->push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

Bytes Midi() {
  tesk_midi::SmfWriter midi(kDivision);
  midi.Tempo(0, 250'000);
  midi.Meter(0, 1, 4);
  midi.End(kBars * kDivision);
  return midi.Bytes();
}

// Two channels of 16-bit silence.
Bytes Wav() {
  constexpr std::uint32_t kBytes = kFrames * 4;
  Bytes wav;
  Append(&wav, "RIFF");
  Append(&wav, 36 + kBytes, 4);
  Append(&wav, "WAVEfmt ");
  Append(&wav, 16, 4);
  Append(&wav, 1, 2);
  Append(&wav, 2, 2);
  Append(&wav, kRate, 4);
  Append(&wav, kRate * 4, 4);
  Append(&wav, 4, 2);
  Append(&wav, 16, 2);
  Append(&wav, "data");
  Append(&wav, kBytes, 4);
  wav.resize(wav.size() + kBytes);
  return wav;
}

}  // namespace

void WriteBenchShow(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder / "songs");
  std::filesystem::create_directories(folder / "data");
  for (const char* const name : {"1 Vamp", "2 Caesura"}) {
    demo::WriteFile(folder / "songs" / (std::string(name) + ".mid"), Midi());
    demo::WriteFile(folder / "data" / (std::string(name) + ".obd"), Wav());
  }
  demo::WriteFile(folder / "songs" / "1 Vamp.toml",
                  BytesOf("format = 1\n[[vamp]]\nfrom = \"2\"\nto = \"3\"\n"));
  demo::WriteFile(folder / "songs" / "2 Caesura.toml", BytesOf("format = 1\n[[caesura]]\nat = \"2\"\n"));
}

}  // namespace orbel::host
