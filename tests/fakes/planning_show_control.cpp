#include "tests/fakes/planning_show_control.h"

#include <stdexcept>
#include <string>

#include "exc/lock/basic_lock.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "suite/midi/how_to_play.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"
#include "suite/player_core/show_control.h"
#include "tests/fakes/journal.h"

namespace fakes::planning {

namespace {

Script script;

}  // namespace

Script& GetScript() {
  return script;
}

}  // namespace fakes::planning

namespace {

using fakes::planning::script;

template <typename... Arguments>
void Tell(const char* operation, Arguments... arguments) {
  if (!script.writesJournal) return;
  std::string entry = std::string("base.") + operation;
  ((entry += " " + std::to_string(arguments)), ...);
  fakes::Write(entry);
}

void Call(const std::function<void()>& hook) {
  if (hook) hook();
}

}  // namespace

struct ShowControl::State {
  exc::RLockable readSamples{"ShowControl.ReadSamples"};
  exc::basic_rlock<false> lock{"ShowControl"};
  CL::SongLog log;
};

ShowControl::ShowControl(ActiveSongNumber& /*activeSongNumber*/, tesk_midi::ShowData& /*showData*/,
                         CL::ChangeLog* /*changeLog*/)
    : exc::Lockable("ShowControl.Unused"), state_(std::make_unique<State>()) {
  script = fakes::planning::Script();
}
ShowControl::~ShowControl() = default;

exc::ExLock* ShowControl::GetLock() {
  return &state_->lock;
}
exc::ExLock& ShowControl::GetReadSamplesLock() {
  return state_->readSamples;
}

// ---- what planning calls -----------------------------------------------------------------------------

void ShowControl::ProcessLoopEventsAtCurrentTickIndex() {
  Tell("ProcessLoopEventsAtCurrentTickIndex");
  Call(script.onProcessLoopEvents);
}

void ShowControl::FindNextControlEventOnAdvance(unsigned from, unsigned to) {
  Tell("FindNextControlEventOnAdvance", from, to);
  Call(script.onFindOnAdvance);
  fakes::planning::Found found;
  if (!script.found.empty()) {
    found = script.found.front();
    script.found.pop_front();
  }
  exc::ScopeLock lock(*this);
  caesuraStop_ = found.caesuraStop;
  jumpPending_ = found.jumpPending;
  replan_ = found.replan;
  reachedTickIndex_ = found.reachedTick.value_or(to);
}

void ShowControl::FindNextControlEventOnSeek(unsigned tick, bool userSeek) {
  Tell("FindNextControlEventOnSeek", tick, userSeek);
  Call(script.onFindOnSeek);
}

void ShowControl::SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead) {
  Tell("SetJump", tickIndex, skipAhead);
  // The scoped lock that the caller holds: a released one would throw here.
  lock.get_mutex();
  Call(script.onSetJump);
  exc::ScopeLock ownLock(*this);
  tickIndex_ = tickIndex;
  GetHowToPlay().Seek(tickIndex);
}

void ShowControl::DoSkipAhead(unsigned tick) {
  Tell("DoSkipAhead", tick);
  exc::ScopeLock lock(*this);
  tickIndex_ = tick;
  GetHowToPlay().AdvanceToTickIndex(tick);
}

void ShowControl::HowToPlayAdvanceToTickIndex(unsigned tickIndex) {
  GetHowToPlay().AdvanceToTickIndex(tickIndex);
}

bool ShowControl::HasPendingCaesura() {
  exc::ScopeLock lock(*this);
  return !pendingCaesuras_.empty() && pendingCaesuras_.front().GetTickIndex() == tickIndex_;
}

bool ShowControl::HasCutAtTickIndex(unsigned tick, unsigned* target) {
  const auto cut = script.cuts.find(tick);
  if (cut == script.cuts.end()) return false;
  *target = cut->second;
  return true;
}

// ---- what else moves the position --------------------------------------------------------------------

bool ShowControl::Seek(unsigned tickIndex) {
  Tell("Seek", tickIndex);
  if (script.seekMovesNothing) return true;
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  SetJump(tickIndex, lock, false);
  return false;
}

unsigned ShowControl::RecoverySeek(unsigned tick) {
  Tell("RecoverySeek", tick);
  exc::ScopeLock lock(*this);
  tickIndex_ = script.settlesAt.value_or(tick);
  GetHowToPlay().Seek(tickIndex_);
  return tickIndex_;
}

bool ShowControl::FullReset() {
  return false;
}

// ---- loading -----------------------------------------------------------------------------------------

const tesk_midi::SongData& ShowControl::GetCurrentSongData() {
  if (script.song == nullptr) throw std::logic_error("No song is loaded.");
  return *script.song;
}

void ShowControl::LoadSong() {
  LoadStartAndEndTickIndices();
  SetDataOnGuiAndHowToPlay();
  FinishLoadingSongLog();
}

void ShowControl::LoadStartAndEndTickIndices() {
  Tell("LoadStartAndEndTickIndices");
}

void ShowControl::SetDataOnGuiAndHowToPlay() {
  GetHowToPlay().SetData(state_->log, GetCurrentSongData().GetTimeline(), GetStartTickIndex());
}

void ShowControl::FinishLoadingSongLog() {
  Tell("FinishLoadingSongLog");
  Call(script.onFinishLoadingSongLog);
  exc::ScopeLock lock(*this);
  tickIndex_ = GetStartTickIndex();
  GetHowToPlay().Seek(tickIndex_);
}

// ---- what the derived class asks or overrides --------------------------------------------------------

void ShowControl::ResetControlVariables() {
  Tell("ResetControlVariables");
}
void ShowControl::ResetGuiUpdate() {
  Tell("ResetGuiUpdate");
}
void ShowControl::OnCaesuraStop() {
  Tell("OnCaesuraStop");
}
bool ShowControl::FollowsClock() {
  Tell("FollowsClock");
  return true;
}
void ShowControl::FollowClock(bool follow) {
  Tell("FollowClock", follow);
}
void ShowControl::SetChangeLog(CL::ChangeLog& /*changeLog*/) {}
long long ShowControl::GetCaesuraCountdown() {
  return -1;
}
unsigned ShowControl::GetFirstCaesuraStackTickIndex() {
  return 0;
}
unsigned ShowControl::GetCaesuraTickIndexAlignedWithClock(unsigned tickIndex) {
  return tickIndex;
}
