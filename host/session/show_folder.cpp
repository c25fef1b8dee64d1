#include "host/session/show_folder.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "exc/text/split_string.h"
#include "host/session/at_work.h"
#include "host/session/failure.h"
#include "host/session/shown_text.h"
#include "suite/audio/errors.h"
#include "suite/utility/listdir.h"
#include "suite/utility/path.h"

namespace orbel::host {
namespace {

constexpr double kUsualRateHz = 44100.0;

tesk_midi::LoadedShow Load(const std::string& path) {
  NoteShow(path);
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) {
    throw Failure(Shown(path) + ": is not a show folder; give the folder that holds songs/ and data/");
  }
  return tesk_midi::LoadShow(path);
}

// Rights are blamed, and mended, only when it is they that are missing.
std::string WhyUnlisted(int reason) {
  if (reason == EACCES || reason == EPERM)
    return "may not be read by this user; give the rights to read and enter it: chmod a+rx";
  return "cannot be read: " + std::generic_category().message(reason);
}

// Empty for a folder. The system's reason first: a folder that may not be entered looks like one that is not
// there.
std::string WhyNoFolder(const std::string& folder, bool* isMissing) {
  namespace fs = std::filesystem;
  std::error_code reason;
  std::error_code ignored;
  const fs::file_status status = fs::status(folder, reason);
  const bool isLink = fs::is_symlink(folder, ignored);
  *isMissing = status.type() == fs::file_type::not_found && !isLink;
  if (*isMissing)
    return "there is no such folder; create it and put the recordings into it as \"NUMBER NAME.obd\"";
  if (reason == std::errc::too_many_symbolic_link_levels)
    return "is a link that leads back to itself; put a folder with the recordings in its place";
  if (status.type() == fs::file_type::not_found)
    return "is a link that leads nowhere; put a folder with the recordings in its place";
  if (fs::exists(status) && !fs::is_directory(status))
    return "is no folder; put a folder with the recordings in its place";
  return "";
}

Recordings ReadRecordings(const std::string& folder) {
  Recordings recordings;
  recordings.fault = WhyNoFolder(folder, &recordings.isMissing);
  if (!recordings.fault.empty()) return recordings;
  try {
    recordings.names = exc::listdir(folder);
  } catch (const exc::ListdirError& error) {
    recordings.fault = WhyUnlisted(error.GetReason());
  }
  return recordings;
}

}  // namespace

ShowFolder::AudioFiles FindAudioFiles(const std::vector<std::string>& names,
                                      std::vector<std::string>* duplicates) {
  ShowFolder::AudioFiles files;
  for (const std::string& name : names) {
    if (exc::path::extension(name) != ".obd") continue;
    const std::string number = exc::SplitString(name, ' ').front();
    const auto known = files.find(number);
    if (known != files.end() && duplicates) {
      duplicates->push_back("data/" + known->second);
      duplicates->push_back("data/" + name);
    }
    files[number] = name;
  }
  return files;
}

ShowFolder::ShowFolder(const std::string& path)
    : path_(path),
      show_(Load(path)),
      recordings_(ReadRecordings(exc::path::Join(path, "data"))),
      audioFiles_(FindAudioFiles(recordings_.names, nullptr)) {}

const tesk_midi::Problem* ShowFolder::WhyUnreadable(const std::string& song) const {
  for (const tesk_midi::Problem& problem : GetWarnings()) {
    if (!problem.isWarning && problem.songNumber == song) return &problem;
  }
  return nullptr;
}

std::string ShowFolder::AudioPath(const std::string& song) const {
  return exc::path::Join(path_, "data", audioFiles_.at(song));
}

std::string ShowFolder::ShownAudioPath(const std::string& song) const {
  return Shown("data/" + audioFiles_.at(song));
}

std::string ShowFolder::MidiFile(const std::string& song) const {
  return "songs/" + song + " " + GetData().GetSong(song).GetName() + ".mid";
}

std::string ShowFolder::CueFile(const std::string& song) const {
  for (const std::string& name : exc::listdir(exc::path::Join(path_, "songs"))) {
    const bool isCues = exc::path::extension(name) == ".toml";
    if (isCues && exc::SplitString(exc::path::basename_no_ext(name), ' ').front() == song)
      return "songs/" + name;
  }
  return "songs/" + song + ".toml";
}

void ShowFolder::ProbeAll() const {
  std::vector<std::string> paths;
  for (const auto& [song, file] : audioFiles_) paths.push_back(AudioPath(song));
  tesk_audio::ProbeAudioFiles(paths);
}

tesk_audio::AudioFileInfo ShowFolder::Probe(const std::string& song) const {
  const AtSong atSong(song, "data/" + audioFiles_.at(song));
  return tesk_audio::ProbeAudioFile(AudioPath(song));
}

double ShowFolder::RateOf(const std::string& song) const {
  if (!HasAudio(song)) return kUsualRateHz;
  try {
    return Probe(song).sampleRateHz;
  } catch (const tesk_audio::TESKAudioError&) {
    return kUsualRateHz;  // whoever needs the audio itself is told why it cannot be read
  }
}

const tesk_midi::SongData& ShowFolder::FindSong(const std::string& number) const {
  const tesk_midi::ShowData& data = GetData();
  for (const std::string& candidate : data.GetRunningOrder()) {
    if (candidate == number || (number.empty() && HasAudio(candidate))) return data.GetSong(candidate);
  }
  if (number.empty()) {
    throw Failure(Shown(path_) + ": no song has audio; put its recording into data/ as \"NUMBER NAME.obd\"");
  }
  std::string known;
  for (const std::string& candidate : data.GetRunningOrder())
    known += (known.empty() ? "" : ", ") + candidate;
  throw Failure(Shown(path_) + ": there is no song \"" + Shown(number) + "\"; the songs are " + Shown(known));
}

}  // namespace orbel::host
