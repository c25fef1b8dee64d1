#include "tests/stress/stress_show.h"

#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/reference_suite/audio/support/sound_files.h"

namespace stress {

namespace {

using scenarios::LoopKind;
using scenarios::SongPlan;

constexpr unsigned kBeat = 480;
constexpr long long kFramesPerBeat = 11025;  // at 240 beats a minute

SongPlan Song(unsigned beats, bool attacca) {
  SongPlan song;
  song.division = kBeat;
  song.tempos = {{0, 250000}};
  song.midiEnd = beats * kBeat;
  song.attacca = attacca;
  song.audioFrames = beats * kFramesPerBeat;
  return song;
}

std::vector<SongPlan> Songs() {
  std::vector<SongPlan> songs = {Song(2, true), Song(4, true),  Song(4, false), Song(1, true),
                                 Song(6, true), Song(3, false), Song(3, true),  Song(2, false)};
  songs[1].loops = {{kBeat, 2 * kBeat, LoopKind::Vamp, 0, scenarios::Exit::Beat}};
  songs[2].caesuras = {2 * kBeat};
  songs[4].loops = {{kBeat, 2 * kBeat, LoopKind::Repeat, 3, scenarios::Exit::End},
                    {3 * kBeat, 4 * kBeat, LoopKind::Safety, 0, scenarios::Exit::End}};
  songs[4].cuts = {{4 * kBeat + 100, 5 * kBeat}};
  songs[4].caesuras = {0, 5 * kBeat + 10};
  songs[6].caesuras = {3 * kBeat};
  songs[6].audioStart = 240;
  songs[7].audioFrames -= 5000;  // the audio ends before the song does
  songs[2].audioFrames = 600'000;
  songs[4].audioFrames = 1'300'000;
  return songs;
}

std::string Encoded(const std::filesystem::path& scratch, int format, int rate, unsigned channels,
                    const std::vector<float>& samples) {
  sound_files::Write(scratch.string(), format, rate, channels, samples);
  return sound_files::Bytes(scratch.string());
}

}  // namespace

StressShow::StressShow() : songs_(Songs()), disk_(std::make_unique<scenarios::ShowOnDisk>(songs_, kRate)) {
  MakeRecordings_();
}

void StressShow::MakeRecordings_() {
  const std::filesystem::path scratch = disk_->Path() / "scratch";
  const int ogg = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
  for (unsigned song = 1; song <= CountSongs(); ++song) {
    waves_.push_back(sound_files::Bytes(File_(song)));
    const long long frames = songs_[song - 1].audioFrames;
    oggs_.push_back(Encoded(scratch, ogg, kRate, 1, sound_files::Noise(frames, 1, song)));
  }
  otherFormat_ =
      Encoded(scratch, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, 2, sound_files::Sines(20000, 2, 48000.0));
  std::filesystem::remove(scratch);
}

std::string StressShow::File_(unsigned song) const {
  return (disk_->Path() / "data" / (std::to_string(song) + " Random Song.obd")).string();
}

unsigned StressShow::LongestSong() const {
  unsigned longest = 0;
  for (const SongPlan& song : songs_) longest = std::max(longest, song.PlaybackEnd());
  return longest;
}

void StressShow::Restore() {
  for (unsigned song = 1; song <= CountSongs(); ++song) {
    std::filesystem::remove_all(File_(song));
    PutInPlace_(song, song % 2 == 0 ? oggs_[song - 1] : waves_[song - 1]);
  }
}

// Whoever has the file open goes on reading the old one.
void StressShow::PutInPlace_(unsigned song, const std::string& bytes) {
  const std::string part = File_(song) + ".part";
  std::ofstream(part, std::ios::binary) << bytes;
  if (std::filesystem::is_directory(File_(song))) std::filesystem::remove_all(File_(song));
  std::filesystem::rename(part, File_(song));
}

void StressShow::Replace(unsigned song, bool byOgg) {
  PutInPlace_(song, byOgg ? oggs_[song - 1] : waves_[song - 1]);
}

void StressShow::Remove(unsigned song) {
  std::filesystem::remove_all(File_(song));
}

void StressShow::TruncateInPlace(unsigned song, double part) {
  const auto length = static_cast<double>(waves_[song - 1].size());
  // Nothing to do when it is not there.
  static_cast<void>(!::truncate(File_(song).c_str(), static_cast<off_t>(length * part)));
}

void StressShow::OverwriteInPlace(unsigned song) {
  std::fstream file(File_(song), std::ios::binary | std::ios::in | std::ios::out);
  file << std::string(3000, '\xA5');
}

void StressShow::ReplaceByOtherFormat(unsigned song) {
  PutInPlace_(song, otherFormat_);
}

void StressShow::ReplaceByFolder(unsigned song) {
  std::filesystem::remove_all(File_(song));
  std::filesystem::create_directory(File_(song));
}

}  // namespace stress
