#include "host/demo/demo_show.h"

#include <cstdint>
#include <set>
#include <string_view>
#include <vector>

#include "host/demo/demo_folder.h"
#include "host/demo/ogg_vorbis.h"
#include "host/demo/score/midi_file.h"
#include "host/demo/songs/demo_song.h"
#include "host/demo/sound/perform.h"

namespace orbel::host {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kFilesPerSong = 3;

Bytes BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

std::string MidiName(const demo::DemoSong& song) {
  return "songs/" + song.number + " " + song.name + ".mid";
}
std::string CueName(const demo::DemoSong& song) {
  return "songs/" + song.number + " " + song.name + ".toml";
}
std::string AudioName(const demo::DemoSong& song) {
  return "data/" + song.number + " " + song.name + ".obd";
}

std::set<std::string> NamesOf(const std::vector<demo::DemoSong>& songs) {
  std::set<std::string> names{demo::kShowName};
  for (const demo::DemoSong& song : songs) names.insert({MidiName(song), CueName(song), AudioName(song)});
  return names;
}

class Writer {
 public:
  Writer(demo::DemoFolder& folder, std::size_t total, const DemoProgressFunction& progress)
      : folder_(folder), progress_(progress) {
    now_.total = total;
  }

  template <class MakeBytes>
  void Write(const std::string& name, MakeBytes makeBytes) {
    Tell_(name);
    folder_.Write(name, makeBytes());
    ++now_.done;
  }

  void Finish() { Tell_(""); }

 private:
  void Tell_(const std::string& file) {
    now_.file = file;
    if (progress_) progress_(now_);
  }

  demo::DemoFolder& folder_;
  const DemoProgressFunction& progress_;
  DemoProgress now_;
};

}  // namespace

void WriteDemoShow(const std::filesystem::path& folder, const DemoProgressFunction& progress) {
  const std::vector<demo::DemoSong> songs = demo::AllSongs();
  demo::DemoFolder target(folder, NamesOf(songs), demo::kShowMark);
  Writer writer(target, 1 + kFilesPerSong * songs.size(), progress);
  // First of all, so that a demo that was broken off is known again.
  writer.Write(demo::kShowName, [] { return BytesOf(demo::kShowFile); });
  std::uint32_t serial = 1;
  for (const demo::DemoSong& song : songs) {
    writer.Write(MidiName(song), [&] { return demo::MidiFileOf(song.score); });
    writer.Write(CueName(song), [&] { return BytesOf(song.cues); });
    writer.Write(AudioName(song), [&] {
      const demo::StereoSound sound = demo::Perform(song.score, song.audioStart, song.audioEnd);
      return demo::EncodeOggVorbis(sound, {serial, song.name});
    });
    ++serial;
  }
  target.Keep();
  writer.Finish();
}

}  // namespace orbel::host
