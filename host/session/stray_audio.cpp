#include "host/session/stray_audio.h"

#include <algorithm>
#include <string>

#include "host/session/failure.h"
#include "host/session/show_folder.h"
#include "host/session/shown_text.h"
#include "suite/utility/numeric_string_compare.h"

namespace orbel::host {
namespace {

// "3 Galop.obd" for "3Galop.obd".
std::string WithABlank(const std::string& file) {
  const auto name = std::find_if(file.begin(), file.end(), [](char c) { return c < '0' || c > '9'; });
  if (name == file.begin() || *name == '.') return "NUMBER NAME.obd";
  return std::string(file.begin(), name) + " " + std::string(name, file.end());
}

// Whether two numbers differ in leading zeros at most. Only then does what stands behind them, after a
// character that no file name has, decide which comes first.
bool HaveOneValue(const std::string& a, const std::string& b) {
  const exc::NumericStringCompare isBefore;
  return isBefore(a + "/1", b + "/2") && isBefore(b + "/1", a + "/2");
}

// The song whose number is the same with other zeros in front; empty when there is none.
std::string SongOfTheSameValue(const ShowFolder& show, const std::string& number) {
  for (const std::string& song : show.GetData().GetRunningOrder()) {
    if (HaveOneValue(song, number)) return song;
  }
  return "";
}

// A song of its own would be refused as a second one with the same number.
std::string WhyWrittenOtherwise(const ShowFolder& show, const std::string& number, const std::string& song,
                                const std::string& file) {
  const std::string why = "there is no song " + number + ", only a song " + song;
  if (show.HasAudio(song)) {
    return why + ", whose recording is \"data/" + show.GetAudioFiles().at(song) +
           "\", so the show cannot be opened; take this file out";
  }
  return why + ", so the show cannot be opened; rename this file to \"" + song + file.substr(number.size()) +
         "\", or take it out";
}

std::string WhyWithoutASong(const ShowFolder& show, const std::string& number, const std::string& file) {
  if (file.find(' ') == std::string::npos) {
    return "the name has no blank behind the song's number, so the show cannot be opened; rename it to \"" +
           WithABlank(file) + "\", or take it out";
  }
  if (number.empty()) {
    return "the name begins with a blank where the song's number belongs, so the show cannot be opened; "
           "rename "
           "it to \"NUMBER" +
           file + "\", or take it out";
  }
  const std::string meant = SongOfTheSameValue(show, number);
  if (!meant.empty()) return WhyWrittenOtherwise(show, number, meant, file);
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
    problem.message = WhyWithoutASong(show, number, file);
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
