#include "host/session/add_song.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "exc/text/split_string.h"
#include "host/session/copy_to_disk.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/shown_text.h"
#include "suite/audio/create.h"
#include "suite/midi/load_show.h"
#include "suite/utility/listdir.h"
#include "suite/utility/path.h"

namespace orbel::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestFileName = 255;

void RequireGoodNames(const NewSong& song) {
  const bool badNumber =
      song.number.empty() || song.number[0] == '.' || song.number.find_first_of(" /\n") != std::string::npos;
  if (badNumber) {
    throw Failure(
        "\"" + Shown(song.number) + "\" is no song number; give one without blanks, for instance 12 or 3a",
        kUsage);
  }
  if (song.name.empty() || song.name.find_first_of("/\n") != std::string::npos) {
    throw Failure("\"" + Shown(song.name) +
                      "\" is no song name; give one without '/' and line ends, for instance \"Waltz\"",
                  kUsage);
  }
  if (song.number.size() + song.name.size() + sizeof " .mid.part" > kLongestFileName) {
    throw Failure("the song's name is too long for a file name; give a shorter one", kUsage);
  }
}

std::string NumberOf(const fs::path& file) {
  return exc::SplitString(exc::path::basename_no_ext(file.filename().string()), ' ').front();
}

// The files of a folder that belong to a song, by their extension.
std::vector<fs::path> FilesOf(const fs::path& folder, const std::string& number,
                              const std::string& extension) {
  std::vector<fs::path> found;
  std::error_code none;
  if (!fs::is_directory(folder, none)) return found;
  for (const std::string& name : exc::listdir(folder.string())) {
    if (exc::path::extension(name) != extension) continue;
    if (tesk_midi::NumberByValue(NumberOf(name)) == tesk_midi::NumberByValue(number))
      found.push_back(folder / name);
  }
  return found;
}

[[noreturn]] void FailOn(const fs::path& path, const std::error_code& error) {
  throw Failure(Shown(path.string()) + ": cannot be written: " + error.message() +
                ". Choose another place, or make room.");
}

// A folder beside the show's own, with the new song as its only one; gone when this goes.
class Draft {
 public:
  explicit Draft(const fs::path& show) : path_(show / (".adding-" + std::to_string(::getpid()))) {
    std::error_code error;
    fs::remove_all(path_, error);
    fs::create_directories(path_ / "songs", error);
    if (!error) fs::create_directories(path_ / "data", error);
    if (error) FailOn(path_, error);
  }
  ~Draft() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  const fs::path& GetPath() const { return path_; }

  void Take(const std::string& from, const fs::path& name) const {
    std::error_code error;
    if (!fs::is_regular_file(from, error))
      throw Failure(Shown(from) + ": is not a file that can be read; give one that is there");
    CopyToDisk(from, path_ / name);
  }

 private:
  fs::path path_;
};

// Removes the folders that this call created when it comes to nothing.
class NewFolders {
 public:
  explicit NewFolders(const fs::path& show) {
    for (const fs::path& folder : {show, show / "songs", show / "data"}) {
      std::error_code error;
      if (fs::exists(folder, error) && !fs::is_directory(folder, error))
        throw Failure(Shown(folder.string()) + ": is a file and not a folder; give the show another name");
      if (fs::create_directory(folder, error)) created_.push_back(folder);
      if (error) FailOn(folder, error);
    }
  }
  ~NewFolders() {
    std::error_code ignored;
    for (auto folder = created_.rbegin(); folder != created_.rend(); ++folder) fs::remove(*folder, ignored);
  }
  NewFolders(const NewFolders&) = delete;
  NewFolders& operator=(const NewFolders&) = delete;
  void Keep() { created_.clear(); }

 private:
  std::vector<fs::path> created_;
};

void RequireFreeNumber(const fs::path& show, const NewSong& song) {
  for (const std::string kind : {".mid", ".obd", ".toml"}) {
    const fs::path folder = show / (kind == ".obd" ? "data" : "songs");
    for (const fs::path& file : FilesOf(folder, song.number, kind)) {
      const std::string written = NumberOf(file);
      if (written != song.number) {
        throw Failure(Shown(file.string()) + ": to a show \"" + Shown(written) + "\" and \"" +
                      Shown(song.number) + "\" are one number; write it the same, or give another");
      }
      if (song.replace || kind == ".toml") continue;  // cues may be there before their song
      throw Failure(Shown(file.string()) + ": song " + Shown(song.number) +
                    " is there already; give another number, or --replace");
    }
  }
}

// Puts one file in its place and takes away those of the same song that it replaces.
void Place(const Draft& draft, const fs::path& show, const fs::path& name, const std::string& number) {
  const fs::path target = show / name;
  std::error_code error;
  fs::rename(draft.GetPath() / name, target, error);
  if (error) FailOn(target, error);
  for (const fs::path& old : FilesOf(target.parent_path(), number, target.extension().string())) {
    if (old != target) fs::remove(old, error);
    if (error) FailOn(old, error);
  }
}

}  // namespace

std::vector<std::string> AddSong(const std::string& showPath, const NewSong& song) {
  RequireGoodNames(song);
  const fs::path show(showPath);
  RequireFreeNumber(show, song);
  NewFolders folders(show);
  const Draft draft(show);
  const fs::path midi = fs::path("songs") / (song.number + " " + song.name + ".mid");
  const fs::path audio = fs::path("data") / (song.number + " " + song.name + ".obd");
  draft.Take(song.midiPath, midi);
  draft.Take(song.audioPath, audio);
  // Cues that are there already have to fit the new music.
  for (const fs::path& cues : FilesOf(show / "songs", song.number, ".toml")) {
    draft.Take(cues.string(), fs::path("songs") / cues.filename());
  }
  try {
    tesk_midi::LoadShow(draft.GetPath().string());
  } catch (const tesk_midi::ShowError& error) {
    throw Failure(Shown(song.midiPath) + ": cannot be added: " + Shown(error.what()));
  }
  tesk_audio::ProbeAudioFile(song.audioPath);
  RequireUninterrupted("song " + Shown(song.number) + " was not added");
  Place(draft, show, audio, song.number);
  Place(draft, show, midi, song.number);
  folders.Keep();
  return {midi.string(), audio.string()};
}

}  // namespace orbel::host
