#include "suite/midi/load_show.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <set>
#include <utility>

#include "reference_suite/midi/show_folder/file_problems.h"
#include "reference_suite/midi/show_folder/load_song.h"
#include "reference_suite/midi/show_folder/read_file.h"
#include "reference_suite/midi/show_folder/read_song_log.h"
#include "reference_suite/midi/show_folder/show_toml.h"
#include "reference_suite/midi/show_folder/song_files.h"
#include "suite/utility/listdir.h"
#include "suite/utility/path.h"

namespace tesk_midi {

namespace {

[[noreturn]] void RefuseAtOnce(const std::string& file, const std::string& message) {
  std::vector<Problem> problems;
  FileProblems(file, "", &problems).Error(message);
  throw ShowError(std::move(problems));
}

void RequireFolder(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    RefuseAtOnce("",
                 "the show folder " + Quoted(path) + " is not there or may not be entered; check its name.");
  }
  if (!S_ISDIR(status.st_mode)) RefuseAtOnce("", Quoted(path) + " is no folder; a show is a folder.");
}

// What is no folder, or not one for this user, can be mended; a disk that fails or memory that is short
// cannot by looking at the folder.
bool IsMendedAtTheFolder(int reason) {
  constexpr std::array kMended{EACCES, EPERM, ENOTDIR, ELOOP};
  return std::find(kMended.begin(), kMended.end(), reason) != kMended.end();
}

std::vector<std::string> ListSongs(const std::string& showPath) {
  const std::string folder = exc::path::Join(showPath, "songs");
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0 && errno == ENOENT) {
    RefuseAtOnce("songs",
                 "the show has no such folder; put each song's MIDI file there as \"NUMBER NAME.mid\".");
  }
  try {
    return exc::listdir(folder);
  } catch (const exc::ListdirError& error) {
    const bool isMended = IsMendedAtTheFolder(error.GetReason());
    RefuseAtOnce("songs",
                 ShownText(error.what()) + (isMended ? "; see that it is a folder that may be read." : "."));
  }
}

bool IsThere(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 || errno != ENOENT;
}

ShowToml LoadShowToml(const std::string& showPath, FileProblems* problems) {
  const std::string path = exc::path::Join(showPath, kShowTomlName);
  if (!IsThere(path)) return {};
  try {
    return ReadShowToml(ReadRegularFile(path, kMaxTomlBytes), problems);
  } catch (const FileError& error) {
    problems->Error(error.what());
    return {};
  }
}

// Gathers a show song by song, and at the end gives it or throws.
class ShowLoader {
 public:
  // `current`: the song being loaded when an exception ends this.
  void LoadSongs(const std::string& showPath, SongFiles* current) {
    std::vector<SongFiles> songs = FindSongFiles(ListSongs(showPath), &problems_.refusing);
    for (SongFiles& files : songs) {
      std::swap(*current, files);
      numbers_.insert(current->number);
      if (auto song = LoadSong(showPath, *current, &problems_)) Take_(std::move(*song));
    }
    *current = {};
    if (songs.empty()) {
      FileProblems("songs", "", &problems_.refusing)
          .Error("there is no song; put each song's MIDI file there as \"NUMBER NAME.mid\".");
    }
  }

  void SetOrder(const std::string& showPath) {
    FileProblems problems(kShowTomlName, "", &problems_.refusing);
    const ShowToml show = LoadShowToml(showPath, &problems);
    data_->SetTitle(show.title);
    data_->SetRunningOrder(MakeRunningOrder({numbers_.begin(), numbers_.end()}, show.order, &problems));
  }

  LoadedShow Finish() {
    std::vector<Problem> all = std::move(problems_.refusing);
    const auto warnings = std::stable_partition(all.begin(), all.end(),
                                                [](const Problem& problem) { return !problem.isWarning; });
    const bool refused = warnings != all.begin();
    const bool nothingLeft = !problems_.leavingOut.empty() && playable_ == 0;
    all.insert(warnings, problems_.leavingOut.begin(), problems_.leavingOut.end());
    if (refused || nothingLeft) throw ShowError(std::move(all));
    return {std::move(data_), std::move(log_), std::move(all)};
  }

 private:
  void Take_(LoadedSong song) {
    const std::string number = song.data.GetNumber();
    if (song.isLeftOut) data_->LeaveOut(number);
    if (!song.isLeftOut) ++playable_;
    data_->AddSong(std::move(song.data));
    log_->SetSongLog(number, std::move(song.log));
  }

  SongProblems problems_;
  std::set<std::string, exc::NumericStringCompare> numbers_;
  int playable_ = 0;
  std::unique_ptr<ShowData> data_ = std::make_unique<ShowData>();
  std::unique_ptr<CL::ChangeLog> log_ = std::make_unique<CL::ChangeLog>();
};

}  // namespace

LoadedShow LoadShow(const std::string& showPath) {
  RequireFolder(showPath);
  SongFiles current;
  try {
    ShowLoader loader;
    loader.LoadSongs(showPath, &current);
    loader.SetOrder(showPath);
    return loader.Finish();
  } catch (const std::bad_alloc&) {
    // What was loaded so far is gone by now, so that there is room for these words.
    const std::string cure = "; end other programs and open it again.";
    if (current.midi.empty())
      RefuseAtOnce("", "there is not enough memory to load " + Quoted(showPath) + cure);
    RefuseAtOnce("songs/" + current.midi, "there is not enough memory for song " + ShownText(current.number) +
                                              " of " + Quoted(showPath) + cure);
  }
}

}  // namespace tesk_midi
