#include "benchmarks/show_on_disk.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <numbers>
#include <random>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/encode/sound_file_writer.h"
#include "reference_suite/audio/output/output_settings.h"
#include "reference_suite/midi/standard_midi_file/smf_writer.h"
#include "tests/support/temporary_folder.h"

namespace orbel_benchmarks {

namespace {

namespace fs = std::filesystem;

struct Folder {
  ~Folder() { fs::remove_all(path); }
  const std::string path = test_support::MakeTemporaryFolder();
};

void WriteMusic(const std::string& path, tesk_audio::SoundFileFormat format, unsigned seconds) {
  tesk_audio::SoundFileWriter writer(path, format, kRate, 2);
  std::mt19937 random(1);
  const auto noise = [&random] { return static_cast<float>(random()) / 4294967296.0F - 0.5F; };
  std::vector<float> second(kRate * 2);
  float left = 0.0F;
  float right = 0.0F;
  for (unsigned index = 0; index < seconds; ++index) {
    for (unsigned frame = 0; frame < kRate; ++frame) {
      const double at = index + frame / static_cast<double>(kRate);
      const double beat = 0.6 + 0.4 * std::sin(2.0 * std::numbers::pi * 2.0 * at);
      left += 0.1F * (noise() - left);
      right += 0.1F * (noise() - right);
      const auto tone = [&](double hz) {
        double sum = 0.0;
        for (int partial = 1; partial <= 6; ++partial) {
          sum += std::sin(2.0 * std::numbers::pi * hz * partial * at) / partial;
        }
        return static_cast<float>(0.15 * beat * sum);
      };
      second[2 * frame] = tone(110.0) + 0.6F * left + 0.05F * noise();
      second[2 * frame + 1] = tone(164.5) + 0.6F * right + 0.05F * noise();
    }
    writer.Write(second.data(), kRate);
  }
  writer.Commit();
}

void WriteSilence(const std::string& path, unsigned seconds) {
  tesk_audio::SoundFileWriter writer(path, tesk_audio::SoundFileFormat::Pcm16, kRate, 2);
  const std::vector<float> second(kRate * 2, 0.0F);
  for (unsigned index = 0; index < seconds; ++index) writer.Write(second.data(), kRate);
  writer.Commit();
}

}  // namespace

ShowOnDisk::ShowOnDisk() : path_(test_support::MakeTemporaryFolder()) {
  fs::create_directories(path_ + "/songs");
  fs::create_directories(path_ + "/data");
}

ShowOnDisk::~ShowOnDisk() {
  fs::remove_all(path_);
}

void ShowOnDisk::Add(const SongOnDisk& song) {
  const std::string name = song.number + " Song";
  const unsigned ticks = song.seconds * kTicksPerSecond;
  tesk_midi::SmfWriter midi(kDivision);
  for (unsigned index = 0; index < song.tempoEvents; ++index) {
    midi.Tempo(static_cast<unsigned>(std::uint64_t{ticks} * index / song.tempoEvents), 500'000 + index % 2);
  }
  midi.End(ticks);
  const auto bytes = midi.Bytes();
  std::ofstream(path_ + "/songs/" + name + ".mid", std::ios::binary)
      << std::string(bytes.begin(), bytes.end());
  if (song.cues > 0) {
    std::ofstream log(path_ + "/songs/" + name + ".toml");
    for (unsigned cue = 0; cue < song.cues; ++cue) {
      const unsigned from = ticks / song.cues * cue;
      log << "[[safety]]\nfrom = { tick = " << from << " }\nto = { tick = " << from + ticks / song.cues / 2
          << " }\n";
    }
  }
  const std::string data = path_ + "/data/" + name + ".obd";
  if (song.audio.empty()) {
    WriteSilence(data, song.seconds);
  } else {
    fs::copy_file(song.audio, data);
  }
}

std::string FourMinutes(const std::string& extension) {
  static const std::map<std::string, tesk_audio::SoundFileFormat> formats = {
      {"ogg", tesk_audio::SoundFileFormat::OggVorbis},
      {"flac", tesk_audio::SoundFileFormat::Flac},
      {"wav", tesk_audio::SoundFileFormat::Pcm16}};
  static const Folder folder;
  const std::string path = folder.path + "/music." + extension;
  if (!fs::exists(path)) WriteMusic(path, formats.at(extension), 240);
  return path;
}

std::unique_ptr<AudioPlayerWrapper> OpenOffline(const std::string& path) {
  tesk_audio::OutputSettings settings;
  settings.device = tesk_audio::DeviceKind::Offline;
  tesk_audio::ConfigureOutput(settings);
  return std::make_unique<AudioPlayerWrapper>(path, "");
}

double Percentile(const std::vector<double>& sorted, double share) {
  const auto index = static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1));
  return sorted.at(index);
}

}  // namespace orbel_benchmarks
