#include "tests/fakes/fake_player_wrapper.h"

#include <map>
#include <stdexcept>

#include "exc/assertion/require_at.h"
#include "suite/player_core/player_wrapper.h"
#include "tests/fakes/journal.h"

namespace fakes::player_wrapper {

namespace {

struct Script {
  std::vector<std::string> songs;
  std::map<std::string, std::string> leftOut;
  std::string failure;
  bool hasShowData = true;
};

Script script;
Seen seen;

}  // namespace

void Reset() {
  script = Script();
  seen = Seen();
}
void SetSongs(const std::vector<std::string>& songs) {
  script.songs = songs;
}
void LeaveOut(const std::string& song, const std::string& message) {
  script.leftOut[song] = message;
}
void FailSetUp(const std::string& text) {
  script.failure = text;
}
void WithholdShowData() {
  script.hasShowData = false;
}
Seen GetSeen() {
  return seen;
}

}  // namespace fakes::player_wrapper

namespace wrapper = fakes::player_wrapper;

PlayerWrapper::PlayerWrapper(const std::string& showPath, const std::string& leaveOut)
    : showPath_(showPath), leaveOut_(leaveOut) {
  wrapper::seen = {showPath, leaveOut, 0};
}
PlayerWrapper::~PlayerWrapper() {
  fakes::Write("wrapper.Delete");
}

std::string PlayerWrapper::GetScoreTar() {
  return {};
}
std::vector<std::string> PlayerWrapper::GetCommandNames() {
  return {};
}
void PlayerWrapper::SetMidiSource(int /*source*/) {}
bool PlayerWrapper::GetHasConductBeat() {
  return false;
}
void PlayerWrapper::LoadChangeLogEditor() {}

void PlayerWrapper::LoadShowData() {
  if (!wrapper::script.hasShowData) return;
  showData_ = std::make_unique<tesk_midi::ShowData>();
  changeLog_ = std::make_unique<CL::ChangeLog>();
  for (const std::string& number : wrapper::script.songs) {
    TL::Timeline timeline;
    cmn::SequenceTemplate<TL::Tempo> tempos;
    tempos.Add(TL::Tempo(0, 240000));
    timeline.SetTempos(tempos);
    timeline.SetMidiEndTicks(9600);
    showData_->AddSong(tesk_midi::SongData(number, "In the show data", 480, timeline));
  }
  showData_->SetRunningOrder(wrapper::script.songs);
}

void PlayerWrapper::SetUp() {
  fakes::Write("wrapper.SetUp");
  wrapper::seen.versionTargetAtSetUp = versionTarget_;
  if (!wrapper::script.failure.empty()) throw std::runtime_error(wrapper::script.failure);
  LoadShowData();
  for (const auto& [number, message] : wrapper::script.leftOut) {
    showData_->LeaveOut(number);
    tesk_midi::Problem problem;
    problem.songNumber = number;
    problem.message = message;
    problems_.push_back(problem);
  }
}

tesk_midi::ShowData& PlayerWrapper::GetShowData() {
  EXC_REQUIRE_AT(this->showData_ != nullptr, "GetShowData", "player_core/player_wrapper", 289);
  return *showData_;
}
