#include "host/session/stray_audio.h"

#include <algorithm>
#include <string>

#include "host/session/failure.h"
#include "host/session/show_folder.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

// "3 Galop.obd" for "3Galop.obd".
std::string WithABlank(const std::string& file) {
  const auto name = std::find_if(file.begin(), file.end(), [](char c) { return c < '0' || c > '9'; });
  if (name == file.begin() || *name == '.') return "NUMBER NAME.obd";
  return std::string(file.begin(), name) + " " + std::string(name, file.end());
}

std::string WhyWithoutASong(const std::string& number, const std::string& file) {
  if (file.find(' ') == std::string::npos) {
    return "the name has no blank behind the song's number, so the show cannot be opened; rename it to \"" +
           WithABlank(file) + "\", or take it out";
  }
  return "there is no song " + number + ", so the show cannot be opened; add \"songs/" + number +
         " NAME.mid\", or take this file out";
}

}  // namespace

std::vector<tesk_midi::Problem> FindStrayAudio(const ShowFolder& show) {
  std::vector<tesk_midi::Problem> problems;
  for (const auto& [number, file] : show.GetAudioFiles()) {
    if (show.GetData().HasSong(number)) continue;
    tesk_midi::Problem problem;
    problem.file = "data/" + file;
    problem.songNumber = number;
    problem.message = WhyWithoutASong(number, file);
    problems.push_back(std::move(problem));
  }
  return problems;
}

void RequireASongForAllAudio(const ShowFolder& show) {
  const std::vector<tesk_midi::Problem> stray = FindStrayAudio(show);
  if (stray.empty()) return;
  std::string why = "No midi data found for song number " + stray.front().songNumber;
  for (const tesk_midi::Problem& problem : stray) why += "\n" + tesk_midi::ToString(problem);
  // A song may be missing because its file's name is odd.
  for (const tesk_midi::Problem& warning : show.GetWarnings()) why += "\n" + tesk_midi::ToString(warning);
  throw Failure(why);
}

}  // namespace orbel::host
