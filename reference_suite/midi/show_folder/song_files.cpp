#include "reference_suite/midi/show_folder/song_files.h"

#include <map>
#include <optional>

#include "reference_suite/midi/show_folder/file_problems.h"
#include "suite/utility/path.h"

namespace tesk_midi {

namespace {

const char kFolder[] = "songs/";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string InSmallLetters(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

// One file, its name taken apart at the first blank.
struct NamedFile {
  std::string file;
  std::string number;
  std::string name;
};

class FileFinder {
 public:
  explicit FileFinder(std::vector<Problem>* problems) : problems_(problems) {}

  void Add(const std::string& entry) {
    const std::string extension = exc::path::extension(entry);
    if (extension == ".mid") {
      AddTo_(&midis_, entry, "give each song a number of its own.");
    } else if (extension == ".toml") {
      AddTo_(&tomls_, entry, "a song has one change log.");
    } else {
      WarnOfExtension_(entry, InSmallLetters(extension));
    }
  }

  std::vector<SongFiles> Take() {
    RefuseLonelyTomls_();
    std::vector<SongFiles> songs;
    for (const auto& [value, midi] : midis_) {
      const auto toml = tomls_.find(value);
      const bool has = toml != tomls_.end() && toml->second.number == midi.number;
      songs.push_back({midi.number, midi.name, midi.file, has ? toml->second.file : ""});
    }
    return songs;
  }

 private:
  using FilesByValue = std::map<std::string, NamedFile>;

  FileProblems ProblemsOf_(const std::string& entry, const std::string& number) {
    return FileProblems(kFolder + entry, number, problems_);
  }

  void AddTo_(FilesByValue* files, const std::string& entry, const std::string& cure) {
    const std::size_t blank = entry.find(' ');
    if (blank == std::string::npos || blank == 0) {
      ProblemsOf_(entry, "").Error(
          "the name must begin with the song's number and a blank; call it, for instance, " +
          Quoted("12 Waltz" + exc::path::extension(entry)) + ".");
      return;
    }
    const std::string number = entry.substr(0, blank);
    const std::string::size_type nameEnd = entry.size() - exc::path::extension(entry).size();
    const std::string name = entry.substr(blank + 1, nameEnd - blank - 1);
    const auto [place, isNew] = files->emplace(NumberByValue(number), NamedFile{entry, number, name});
    if (isNew) return;
    ProblemsOf_(entry, number)
        .Error("the number " + Quoted(number) + " is that of " + Quoted(kFolder + place->second.file) +
               " too; " + cure);
  }

  void RefuseLonelyTomls_() {
    for (const auto& [value, toml] : tomls_) {
      const auto midi = midis_.find(value);
      FileProblems problems = ProblemsOf_(toml.file, toml.number);
      if (midi == midis_.end()) {
        problems.Error("song " + Quoted(toml.number) + " has no MIDI file; add " +
                       Quoted(kFolder + toml.number + " " + toml.name + ".mid") + " or remove this file.");
      } else if (midi->second.number != toml.number) {
        problems.Error("the number is written " + Quoted(toml.number) + " here and " +
                       Quoted(midi->second.number) + " in " + Quoted(kFolder + midi->second.file) +
                       "; write both alike.");
      }
    }
  }

  void WarnOfExtension_(const std::string& entry, const std::string& extension) {
    if (extension != ".mid" && extension != ".midi" && extension != ".toml") return;
    ProblemsOf_(entry, "").Warn(
        "is not read; the name of a song's MIDI file ends in \".mid\" and that of its cues in "
        "\".toml\".");
  }

  std::vector<Problem>* problems_;
  FilesByValue midis_;
  FilesByValue tomls_;
};

}  // namespace

std::string NumberByValue(const std::string& number) {
  std::string value;
  for (std::size_t i = 0; i < number.size(); ++i) {
    const bool leads = number[i] == '0' && (value.empty() || !IsDigit(value.back()));
    const bool digitFollows = i + 1 < number.size() && IsDigit(number[i + 1]);
    if (!leads || !digitFollows) value += number[i];
  }
  return value;
}

std::vector<SongFiles> FindSongFiles(const std::vector<std::string>& entries,
                                     std::vector<Problem>* problems) {
  FileFinder finder(problems);
  for (const std::string& entry : entries) finder.Add(entry);
  return finder.Take();
}

}  // namespace tesk_midi
