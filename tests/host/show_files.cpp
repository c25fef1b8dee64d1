#include "tests/host/show_files.h"

#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

#include "reference_suite/midi/standard_midi_file/smf_writer.h"

namespace host_tests {
namespace {

constexpr unsigned kDivision = 480;

void Append(std::string* out, std::uint32_t value, int bytes) {
  for (int index = 0; index < bytes; ++index) *out += static_cast<char>(value >> (8 * index));
}

}  // namespace

ShowFiles::ShowFiles() {
  static int count = 0;
  folder_ = std::filesystem::temp_directory_path() /
            ("orbel_host_test_" + std::to_string(::getpid()) + "_" + std::to_string(++count));
  std::filesystem::remove_all(folder_);
  std::filesystem::create_directories(folder_ / "show" / "songs");
  std::filesystem::create_directories(folder_ / "show" / "data");
}

ShowFiles::~ShowFiles() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void ShowFiles::AddSong(const std::string& number, const std::string& name, unsigned bars,
                        const std::string& cues) {
  const std::string title = number + " " + name;
  WriteMidi(At("songs/" + title + ".mid"), bars);
  WriteWav(At("data/" + title + ".obd"), FramesFromZero(static_cast<long long>(bars) * kRate), kRate);
  if (!cues.empty()) Write("songs/" + title + ".toml", "format = 1\n" + cues);
}

void ShowFiles::WriteMidi(const std::filesystem::path& path, unsigned bars) const {
  tesk_midi::SmfWriter midi(kDivision);
  midi.Tempo(0, 250'000);
  midi.Meter(0, 4, 4);
  midi.End(bars * 4 * kDivision);
  const std::vector<std::uint8_t> bytes = midi.Bytes();
  std::ofstream(path, std::ios::binary) << std::string(bytes.begin(), bytes.end());
}

void ShowFiles::Write(const std::string& path, const std::string& text) const {
  std::ofstream(At(path), std::ios::binary) << text;
}

float FrameValue(long long index) {
  return static_cast<float>(index + 1) / 16777216.0F;
}

std::vector<float> FramesFromZero(long long count) {
  std::vector<float> frames;
  for (long long index = 0; index < count; ++index) frames.push_back(FrameValue(index));
  return frames;
}

void WriteWav(const std::filesystem::path& path, const std::vector<float>& samples, unsigned rate,
              unsigned channels) {
  const auto bytes = static_cast<std::uint32_t>(samples.size() * 4);
  std::string out = "RIFF";
  Append(&out, 36 + bytes, 4);
  out += "WAVEfmt ";
  Append(&out, 16, 4);
  Append(&out, 3, 2);  // floating point
  Append(&out, channels, 2);
  Append(&out, rate, 4);
  Append(&out, rate * channels * 4, 4);
  Append(&out, channels * 4, 2);
  Append(&out, 32, 2);
  out += "data";
  Append(&out, bytes, 4);
  for (const float sample : samples) Append(&out, std::bit_cast<std::uint32_t>(sample), 4);
  std::ofstream(path, std::ios::binary) << out;
}

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<float> ReadFloatWav(const std::string& path) {
  const std::string text = ReadText(path);
  std::vector<float> samples;
  for (std::size_t at = 12; at + 8 <= text.size();) {
    std::uint32_t size = 0;
    std::memcpy(&size, text.data() + at + 4, 4);
    if (text.compare(at, 4, "data") == 0 && at + 8 + size <= text.size()) {
      samples.resize(size / 4);
      std::memcpy(samples.data(), text.data() + at + 8, samples.size() * 4);
      break;
    }
    at += 8 + size + size % 2;
  }
  return samples;
}

}  // namespace host_tests
