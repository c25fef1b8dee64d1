#include "tests/scenarios/show_on_disk.h"

#include <bit>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "tests/support/temporary_folder.h"

namespace scenarios {
namespace {

void PutBig(std::string* out, std::uint32_t value, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) out->push_back(static_cast<char>(value >> (8 * i)));
}

void PutLittle(std::string* out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out->push_back(static_cast<char>(value >> (8 * i)));
}

void PutDelta(std::string* out, std::uint32_t ticks) {
  for (int shift = 21; shift > 0; shift -= 7) {
    if (ticks >> shift) out->push_back(static_cast<char>(0x80 | ((ticks >> shift) & 0x7f)));
  }
  out->push_back(static_cast<char>(ticks & 0x7f));
}

std::string MidiFile(const SongPlan& song) {
  const unsigned multiplier = song.Multiplier();
  std::string track;
  unsigned now = 0;
  PutDelta(&track, 0);
  track += "\xff\x58\x04";
  PutBig(&track, song.meter.beats, 1);
  PutBig(&track, static_cast<std::uint32_t>(std::countr_zero(song.meter.unit)), 1);
  PutBig(&track, 0x1808, 2);
  for (const TempoPlan& tempo : song.tempos) {
    PutDelta(&track, tempo.tick / multiplier - now);
    now = tempo.tick / multiplier;
    track += "\xff\x51\x03";
    PutBig(&track, tempo.microsecondsPerQuarter, 3);
  }
  PutDelta(&track, song.midiEnd / multiplier - now);
  track += std::string("\xff\x2f\x00", 3);

  std::string file = "MThd";
  PutBig(&file, 6, 4);
  PutBig(&file, 0, 2);
  PutBig(&file, 1, 2);
  PutBig(&file, song.division, 2);
  file += "MTrk";
  PutBig(&file, static_cast<std::uint32_t>(track.size()), 4);
  return file + track;
}

std::string At(unsigned tick) {
  return "{ tick = " + std::to_string(tick) + " }\n";
}

std::string ChangeLog(const SongPlan& song) {
  static const char* const kTables[] = {"[[vamp]]", "[[repeat]]", "[[safety]]"};
  static const char* const kExits[] = {"end", "bar", "beat"};
  std::ostringstream out;
  out << "format = 1\nattacca = " << (song.attacca ? "true" : "false") << "\n";
  if (song.audioStart != 0) out << "audio_start = " << At(song.audioStart);
  if (song.audioEnd != 0) out << "audio_end = " << At(song.audioEnd);
  for (const LoopPlan& loop : song.loops) {
    out << kTables[static_cast<int>(loop.kind)] << "\nfrom = " << At(loop.from) << "to = " << At(loop.to);
    if (loop.kind == LoopKind::Vamp) out << "exit = \"" << kExits[static_cast<int>(loop.exit)] << "\"\n";
    if (loop.kind == LoopKind::Repeat) out << "passes = " << loop.passes << "\n";
  }
  for (const CutPlan& cut : song.cuts) out << "[[cut]]\nfrom = " << At(cut.from) << "to = " << At(cut.to);
  for (unsigned tick : song.caesuras) out << "[[caesura]]\nat = " << At(tick);
  return out.str();
}

std::string WavFile(const SongPlan& song, unsigned rate) {
  const auto bytes = static_cast<std::uint32_t>(3 * song.audioFrames);
  std::string file = "RIFF";
  PutLittle(&file, 36 + bytes, 4);
  file += "WAVEfmt ";
  PutLittle(&file, 16, 4);
  PutLittle(&file, 1, 2);
  PutLittle(&file, 1, 2);
  PutLittle(&file, rate, 4);
  PutLittle(&file, 3 * rate, 4);
  PutLittle(&file, 3, 2);
  PutLittle(&file, 24, 2);
  file += "data";
  PutLittle(&file, bytes, 4);
  for (long long i = 0; i < song.audioFrames; ++i) {
    PutLittle(&file, static_cast<std::uint32_t>(song.firstValue + i), 3);
  }
  return file;
}

void Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace

ShowOnDisk::ShowOnDisk(const std::vector<SongPlan>& songs, unsigned rate) {
  path_ = test_support::MakeTemporaryFolder();
  std::filesystem::create_directories(path_ / "songs");
  std::filesystem::create_directories(path_ / "data");
  for (std::size_t i = 0; i < songs.size(); ++i) {
    const std::string stem = std::to_string(i + 1) + " Random Song";
    Write(path_ / "songs" / (stem + ".mid"), MidiFile(songs[i]));
    Write(path_ / "songs" / (stem + ".toml"), ChangeLog(songs[i]));
    Write(path_ / "data" / (stem + ".obd"), WavFile(songs[i], rate));
  }
}

ShowOnDisk::~ShowOnDisk() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace scenarios
