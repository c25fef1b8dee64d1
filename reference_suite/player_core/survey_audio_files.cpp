#include "reference_suite/player_core/survey_audio_files.h"

#include <exception>
#include <map>

#include "suite/audio/create.h"
#include "suite/midi/show_data.h"
#include "suite/utility/listdir.h"
#include "suite/utility/path.h"

namespace player_core {

namespace {

// The timing core counts the frames of a song in 32 bits where it checks itself.
constexpr long long kMostFrames = 4'294'967'295;

using FilesBySong = std::map<std::string, std::string>;

tesk_midi::Problem MakeProblem(const std::string& file, const std::string& songNumber,
                               const std::string& message) {
  tesk_midi::Problem problem;
  problem.file = "data/" + file;
  problem.songNumber = songNumber;
  problem.message = message;
  return problem;
}

// "NUMBER NAME.obd"; of two files with one number the later one in the listing is the song's.
FilesBySong ListAudioFiles(const std::string& showPath, std::vector<tesk_midi::Problem>* problems) {
  FilesBySong files;
  for (const std::string& file : exc::listdir(exc::path::Join(showPath, "data"))) {
    if (exc::path::extension(file) != ".obd") continue;
    const std::string number = file.substr(0, file.find(' '));
    const auto [known, isNew] = files.try_emplace(number, file);
    if (isNew) continue;
    tesk_midi::Problem problem = MakeProblem(
        known->second, number,
        "has the same number as \"data/" + file + "\", which is played instead; remove one of the two");
    problem.isWarning = true;
    problems->push_back(problem);
    known->second = file;
  }
  return files;
}

// Empty when the file can be played.
std::string FindFault(const std::string& path) {
  try {
    const tesk_audio::AudioFileInfo info = tesk_audio::ProbeAudioFile(path);
    if (info.frames == 0) return "The file holds no audio.";
    if (info.frames > kMostFrames) {
      return "The audio has " + std::to_string(info.frames) + " frames; more than " +
             std::to_string(kMostFrames) + " cannot be played. Split the song.";
    }
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

std::string PathOf(const std::string& showPath, const std::string& file) {
  return exc::path::Join(showPath, "data", file);
}

void LookAtAll(const std::string& showPath, const std::vector<std::string>& order, const FilesBySong& files) {
  std::vector<std::string> paths;
  for (const std::string& number : order) {
    const auto file = files.find(number);
    if (file != files.end()) paths.push_back(PathOf(showPath, file->second));
  }
  tesk_audio::ProbeAudioFiles(paths);
}

}  // namespace

std::vector<tesk_midi::Problem> SurveyAudioFiles(const std::string& showPath, tesk_midi::ShowData& show) {
  std::vector<tesk_midi::Problem> problems;
  const FilesBySong files = ListAudioFiles(showPath, &problems);
  const std::vector<std::string> order = show.GetRunningOrder();
  LookAtAll(showPath, order, files);
  for (const std::string& number : order) {
    const auto file = files.find(number);
    if (file == files.end()) {
      show.SetHasNoAudio(number);
      continue;
    }
    const std::string fault = FindFault(PathOf(showPath, file->second));
    if (fault.empty()) continue;
    show.LeaveOut(number);
    problems.push_back(
        MakeProblem(file->second, number, fault + " Song " + number + " is left out of the show."));
  }
  return problems;
}

}  // namespace player_core
