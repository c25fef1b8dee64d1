#include "suite/player_core/player_wrapper.h"

#include <exception>

#include "exc/assertion/require_at.h"
#include "exc/text/split_string.h"
#include "reference_suite/player_core/survey_audio_files.h"

namespace {

constexpr const char* kSourcePath = "player_core/player_wrapper";

}  // namespace

PlayerWrapper::PlayerWrapper(const std::string& showPath, const std::string& leaveOut)
    : showPath_(showPath), leaveOut_(leaveOut) {}

PlayerWrapper::~PlayerWrapper() = default;

std::string PlayerWrapper::GetScoreTar() {
  return {};
}

std::vector<std::string> PlayerWrapper::GetCommandNames() {
  return {"go",       "again", "play", "pause", "stop",  "next",
          "previous", "seek",  "left", "right", "tempo", "transpose"};
}

// What a performer asks for comes from the host, and nobody beats time into it.
void PlayerWrapper::SetMidiSource(int /*source*/) {}

bool PlayerWrapper::GetHasConductBeat() {
  return false;
}

// Change logs are edited as text.
void PlayerWrapper::LoadChangeLogEditor() {}

void PlayerWrapper::LoadShowData() {
  tesk_midi::LoadedShow show = tesk_midi::LoadShow(showPath_);
  showData_ = std::move(show.showData);
  changeLog_ = std::move(show.changeLog);
  problems_ = std::move(show.warnings);
}

void PlayerWrapper::SetUp() {
  LoadShowData();
  tesk_midi::ShowData& show = GetShowData();
  if (!leaveOut_.empty()) {
    for (const std::string& number : exc::SplitString(leaveOut_, ',')) {
      if (show.HasSong(number)) {
        show.LeaveOut(number);
        continue;
      }
      tesk_midi::Problem problem;
      problem.songNumber = number;
      problem.message = "Song " + number + " is to be left out, but the show has no such song.";
      problem.isWarning = true;
      problems_.push_back(problem);
    }
  }
  const std::vector<tesk_midi::Problem> found = player_core::SurveyAudioFiles(showPath_, show);
  problems_.insert(problems_.end(), found.begin(), found.end());
}

tesk_midi::ShowData& PlayerWrapper::GetShowData() {
  EXC_REQUIRE_AT(this->showData_ != nullptr, "GetShowData", kSourcePath, 289);
  return *showData_;
}
