#include "tests/fakes/scripted_show_control.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include "exc/lock/basic_lock.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "suite/midi/change_log.h"
#include "suite/midi/how_to_play.h"
#include "suite/midi/show_data.h"
#include "suite/player_core/active_song_number.h"
#include "suite/player_core/errors.h"
#include "suite/player_core/show_control.h"
#include "tests/fakes/journal.h"

namespace fakes::show_control {

namespace {

struct Script {
  unsigned lastSeek = 0;
  bool seekMovesNothing = false;
  bool resetMovesNothing = false;
  unsigned seekLeft = 0;
  unsigned seekRight = 0;
  std::optional<std::string> seekLeftFailure;
  std::optional<std::string> seekRightFailure;
  bool fermataIsCanceled = false;
  bool caesuraIsPending = false;
  std::optional<unsigned> nextCaesura;
  std::optional<std::pair<unsigned, unsigned>> cut;
  std::set<std::string> skipped;
  std::function<void()> onLoadSong;
  std::function<void()> onFullReset;
  std::function<void()> onSeek;
  std::function<void()> onSongQuery;
  std::function<void()> onLastSeekQuery;
};

std::mutex mutex;
Script script;

Script Get() {
  const std::lock_guard lock(mutex);
  return script;
}

template <typename Change>
void Set(Change change) {
  const std::lock_guard lock(mutex);
  change(script);
}

void Call(const std::function<void()>& hook) {
  if (hook) hook();
}

}  // namespace

void Reset() {
  Set([](Script& s) { s = Script(); });
}
void SetLastSeekTickIndex(unsigned tickIndex) {
  Set([=](Script& s) { s.lastSeek = tickIndex; });
}
void AnswerSeek(bool nothingMoved) {
  Set([=](Script& s) { s.seekMovesNothing = nothingMoved; });
}
void AnswerFullReset(bool nothingMoved) {
  Set([=](Script& s) { s.resetMovesNothing = nothingMoved; });
}
void SetSeekLeft(unsigned tickIndex) {
  Set([=](Script& s) { s.seekLeft = tickIndex; });
}
void SetSeekRight(unsigned tickIndex) {
  Set([=](Script& s) { s.seekRight = tickIndex; });
}
void FailSeekLeft(const std::string& text) {
  Set([&](Script& s) { s.seekLeftFailure = text; });
}
void FailSeekRight(const std::string& text) {
  Set([&](Script& s) { s.seekRightFailure = text; });
}
void SetFermataCanceled(bool canceled) {
  Set([=](Script& s) { s.fermataIsCanceled = canceled; });
}
void SetHasPendingCaesura(bool pending) {
  Set([=](Script& s) { s.caesuraIsPending = pending; });
}
void SetNextCaesura(unsigned tickIndex) {
  Set([=](Script& s) { s.nextCaesura = tickIndex; });
}
void SetCut(unsigned from, unsigned target) {
  Set([=](Script& s) { s.cut = {from, target}; });
}
void Skip(const std::string& songNumber) {
  Set([&](Script& s) { s.skipped.insert(songNumber); });
}
void SkipNothing() {
  Set([](Script& s) { s.skipped.clear(); });
}
void OnLoadSong(std::function<void()> hook) {
  Set([&](Script& s) { s.onLoadSong = std::move(hook); });
}
void OnFullReset(std::function<void()> hook) {
  Set([&](Script& s) { s.onFullReset = std::move(hook); });
}
void OnSeek(std::function<void()> hook) {
  Set([&](Script& s) { s.onSeek = std::move(hook); });
}
void OnSongQuery(std::function<void()> hook) {
  Set([&](Script& s) { s.onSongQuery = std::move(hook); });
}
void OnLastSeekQuery(std::function<void()> hook) {
  Set([&](Script& s) { s.onLastSeekQuery = std::move(hook); });
}

}  // namespace fakes::show_control

namespace script = fakes::show_control;
using fakes::Write;

struct ShowControl::State {
  State(ActiveSongNumber& number, tesk_midi::ShowData& show) : activeSongNumber(number), showData(show) {}
  ActiveSongNumber& activeSongNumber;
  tesk_midi::ShowData& showData;
  exc::RLockable readSamples{"ReadSamples"};
  exc::basic_rlock<false> lock{"ShowControl"};
  CL::SongLog emptyLog;
};

ShowControl::ShowControl(ActiveSongNumber& activeSongNumber, tesk_midi::ShowData& showData,
                         CL::ChangeLog* /*changeLog*/)
    : exc::Lockable("ShowControl"), state_(std::make_unique<State>(activeSongNumber, showData)) {}
ShowControl::~ShowControl() = default;

exc::ExLock* ShowControl::GetLock() {
  return &state_->lock;
}
exc::ExLock& ShowControl::GetReadSamplesLock() {
  return state_->readSamples;
}

bool ShowControl::FullReset() {
  Write("control.FullReset");
  const auto answers = script::Get();
  script::Call(answers.onFullReset);
  exc::ScopeLock samples(state_->readSamples);
  if (answers.resetMovesNothing) return true;
  ResetControlVariables();
  exc::ScopeLock lock(*this);
  SetJump(GetStartTickIndex(), lock, false);
  return false;
}

bool ShowControl::Seek(unsigned tickIndex) {
  Write("control.Seek " + std::to_string(tickIndex));
  const auto answers = script::Get();
  script::Call(answers.onSeek);
  exc::ScopeLock samples(state_->readSamples);
  if (answers.seekMovesNothing) return true;
  exc::ScopeLock lock(*this);
  const unsigned target = std::max(tickIndex, GetStartTickIndex());
  SetJump(target, lock, false);
  script::SetLastSeekTickIndex(target);
  return false;
}

bool ShowControl::FollowsClock() {
  return false;
}

void ShowControl::LoadSong() {
  Write("control.LoadSong " + state_->activeSongNumber.Get());
  script::Call(script::Get().onLoadSong);
  exc::ScopeLock samples(state_->readSamples);
  LoadStartAndEndTickIndices();
  SetDataOnGuiAndHowToPlay();
  FinishLoadingSongLog();
}

void ShowControl::FinishLoadingSongLog() {
  exc::ScopeLock lock(*this);
  tickIndex_ = GetStartTickIndex();
  if (const auto caesura = script::Get().nextCaesura) pendingCaesuras_ = {CountdownCaesura(*caesura)};
  GetHowToPlay().Seek(tickIndex_);
  script::SetLastSeekTickIndex(tickIndex_);
}

void ShowControl::SetDataOnGuiAndHowToPlay() {
  GetHowToPlay().SetData(state_->emptyLog, GetCurrentSongData().GetTimeline(), GetStartTickIndex());
}

const tesk_midi::SongData& ShowControl::GetCurrentSongData() {
  return state_->showData.GetSong(state_->activeSongNumber.Get());
}
const CL::SongLog& ShowControl::GetCurrentSongLog() {
  return state_->emptyLog;
}

void ShowControl::OnCaesuraStop() {
  Write("control.OnCaesuraStop");
}
void ShowControl::ResetGuiUpdate() {
  Write("control.ResetGuiUpdate");
}
void ShowControl::SetChangeLog(CL::ChangeLog& /*changeLog*/) {}
void ShowControl::FollowClock(bool /*follow*/) {}
void ShowControl::ResetControlVariables() {}
long long ShowControl::GetCaesuraCountdown() {
  return -1;
}
unsigned ShowControl::GetFirstCaesuraStackTickIndex() {
  return 0;
}
unsigned ShowControl::GetCaesuraTickIndexAlignedWithClock(unsigned tickIndex) {
  return tickIndex;
}
void ShowControl::LoadStartAndEndTickIndices() {}
void ShowControl::SetJump(unsigned tickIndex, exc::ExLock& /*lock*/, bool /*skipAhead*/) {
  tickIndex_ = tickIndex;
  GetHowToPlay().Seek(tickIndex);
}

unsigned ShowControl::GetLastSeekTickIndex() {
  const auto answers = script::Get();
  script::Call(answers.onLastSeekQuery);
  return answers.lastSeek;
}

unsigned ShowControl::GetSeekLeft() {
  const auto answers = script::Get();
  if (answers.seekLeftFailure) throw std::out_of_range(*answers.seekLeftFailure);
  return answers.seekLeft;
}

unsigned ShowControl::GetSeekRight() {
  const auto answers = script::Get();
  if (answers.seekRightFailure) throw std::out_of_range(*answers.seekRightFailure);
  return answers.seekRight;
}

// Whatever is asked for is reached: no cue lies ahead.
void ShowControl::FindNextControlEventOnAdvance(unsigned /*from*/, unsigned to) {
  exc::ScopeLock lock(*this);
  reachedTickIndex_ = to;
}
void ShowControl::FindNextControlEventOnSeek(unsigned /*tick*/, bool /*userSeek*/) {}
void ShowControl::ProcessLoopEventsAtCurrentTickIndex() {
  Write("control.ProcessLoopEvents");
}
void ShowControl::DoSkipAhead(unsigned tick) {
  exc::ScopeLock lock(*this);
  tickIndex_ = tick;
  GetHowToPlay().AdvanceToTickIndex(tick);
}
void ShowControl::HowToPlayAdvanceToTickIndex(unsigned tickIndex) {
  GetHowToPlay().AdvanceToTickIndex(tickIndex);
}
bool ShowControl::HasPendingCaesura() {
  return script::Get().caesuraIsPending;
}
bool ShowControl::HasCutAtTickIndex(unsigned tick, unsigned* target) {
  const auto cut = script::Get().cut;
  if (!cut || cut->first != tick) return false;
  *target = cut->second;
  return true;
}
unsigned ShowControl::RecoverySeek(unsigned tick) {
  Write("control.RecoverySeek " + std::to_string(tick));
  exc::ScopeLock lock(*this);
  tickIndex_ = tick;
  return tick;
}
bool ShowControl::GetFermataCanceledCaesura() {
  return script::Get().fermataIsCanceled;
}
void ShowControl::ClearFermataCanceledCaesura() {
  Write("control.ClearFermataCanceledCaesura");
  script::SetFermataCanceled(false);
}
bool ShowControl::StandsAtCaesura() {
  return false;
}
void ShowControl::LeaveCaesura() {}

bool ShowControl::ExitLoop() {
  return false;
}
bool ShowControl::RepeatSafety() {
  return false;
}
bool ShowControl::CancelCaesura(bool* /*alreadyReached*/) {
  return false;
}
bool ShowControl::GetPerformersJump(Jump* /*jump*/) {
  return false;
}
void ShowControl::ClearPerformersJump() {}
bool ShowControl::GetNextJump(Jump* /*jump*/) {
  return false;
}

std::string ShowControl::GetSongAfter(const std::string& songNumber) {
  script::Call(script::Get().onSongQuery);
  const auto& order = state_->showData.GetRunningOrder();
  const auto song = std::find(order.begin(), order.end(), songNumber);
  if (song == order.end() || song + 1 == order.end()) throw EndOfShow("No song after " + songNumber + ".");
  return *(song + 1);
}

std::string ShowControl::GetSongBefore(const std::string& songNumber) {
  script::Call(script::Get().onSongQuery);
  const auto& order = state_->showData.GetRunningOrder();
  const auto song = std::find(order.begin(), order.end(), songNumber);
  if (song == order.begin() || song == order.end()) {
    throw StartOfShow("No song before " + songNumber + ".");
  }
  return *(song - 1);
}

bool ShowControl::HasSongWithAudioAfter(const std::string& /*songNumber*/) {
  return false;
}
bool ShowControl::SongIsNotSkip(const std::string& songNumber) {
  return script::Get().skipped.count(songNumber) == 0;
}
void ShowControl::SetAttaccaState(const std::string& /*songNumber*/, unsigned char /*state*/) {}
unsigned char ShowControl::GetAttaccaState(const std::string& /*songNumber*/) {
  return 0;
}
