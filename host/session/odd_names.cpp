#include "host/session/odd_names.h"

#include <algorithm>
#include <array>
#include <string>

#include "host/session/show_folder.h"
#include "host/session/shown_text.h"
#include "suite/midi/song_data.h"
#include "suite/utility/listdir.h"
#include "suite/utility/path.h"

namespace orbel::host {
namespace {

using Problems = std::vector<tesk_midi::Problem>;

tesk_midi::Problem Warning(const std::string& file, const std::string& song, const std::string& message) {
  return {.file = file, .songNumber = song, .message = message, .isWarning = true};
}

// A name with the number of a song and another name behind it.
void CompareWithItsSong(const ShowFolder& show, const std::string& folder, const std::string& file,
                        Problems* out) {
  const std::string whole = exc::path::basename_no_ext(file);
  const std::size_t blank = whole.find(' ');
  if (blank == std::string::npos) return;
  const std::string song = whole.substr(0, blank);
  if (!show.GetData().HasSong(song)) return;
  // A song knows its name only as it may be shown, so the file's is compared as it is shown too.
  if (Shown(whole.substr(blank + 1)) == Shown(show.GetData().GetSong(song).GetName())) return;
  out->push_back(Warning(
      folder + file, song,
      "is taken for song " + song + " because of its number, though that song is called otherwise: \"" +
          show.MidiFile(song) + "\"; name both alike, or give the file the number of its own song"));
}

// What looks like a MIDI file or cues and is not read is told when the show is loaded.
bool LooksLikeASong(const std::string& file) {
  std::string extension = exc::path::extension(file);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  static constexpr std::array kKnown{".mid", ".midi", ".toml"};
  return std::find(kKnown.begin(), kKnown.end(), extension) != kKnown.end();
}

}  // namespace

Problems FindOddNames(const ShowFolder& show) {
  Problems problems;
  for (const std::string& file : exc::listdir(exc::path::Join(show.GetPath(), "songs"))) {
    if (exc::path::extension(file) == ".toml") {
      CompareWithItsSong(show, "songs/", file, &problems);
    } else if (!LooksLikeASong(file)) {
      problems.push_back(Warning(
          "songs/" + file, "",
          "is not read, because its name ends neither in \".mid\" nor in \".toml\"; rename it, or take it "
          "out"));
    }
  }
  for (const auto& [song, file] : show.GetAudioFiles()) CompareWithItsSong(show, "data/", file, &problems);
  return problems;
}

}  // namespace orbel::host
