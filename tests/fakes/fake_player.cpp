#include "tests/fakes/fake_player.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "exc/lock/scope_lock.h"
#include "suite/player_core/content_argument.h"
#include "suite/player_core/player.h"
#include "tests/fakes/journal.h"

namespace fakes::player {

namespace {

std::atomic<bool> songIsAttacca{false};
std::atomic<unsigned> position{0};

std::mutex mutex;
std::vector<PlayerState> statesSet;
std::function<void(PlayerState)> onSetState;

}  // namespace

void Reset() {
  songIsAttacca = false;
  position = 0;
  const std::lock_guard lock(mutex);
  statesSet.clear();
  onSetState = nullptr;
}

void SetSongIsAttacca(bool isAttacca) {
  songIsAttacca = isAttacca;
}

void SetTickIndex(unsigned tickIndex) {
  position = tickIndex;
}

std::vector<PlayerState> TakeStatesSet() {
  const std::lock_guard lock(mutex);
  return std::exchange(statesSet, {});
}

void OnSetState(std::function<void(PlayerState)> hook) {
  const std::lock_guard lock(mutex);
  onSetState = std::move(hook);
}

}  // namespace fakes::player

using fakes::Write;

Player::Player(const std::string& showPath)
    : exc::RLockable("Player"), showPath_(showPath), contentArgument_(player_core::GetContentArgument()) {}
Player::~Player() = default;

bool Player::HasPendingCaesura() {
  return false;
}
bool Player::CurrentSongIsAttacca() {
  return fakes::player::songIsAttacca;
}
bool Player::GetJump(Jump* /*jump*/) {
  return false;
}
void Player::ClearJump() {}
bool Player::GetJumpForVampRepeatOrCut(Jump* /*jump*/) {
  return false;
}
void Player::GUINotifyCaesura() {
  Write("player.GUINotifyCaesura");
}
bool Player::GetFermataCanceledCaesura() {
  return false;
}
void Player::EnsureGuiIsCurrent() {
  Write("player.EnsureGuiIsCurrent");
}
void Player::SeekToPreviousMeasure() {}
void Player::SeekToNextMeasure() {}
void Player::SetAttaccaState(const std::string& songNumber, unsigned char state) {
  Write("player.SetAttaccaState " + songNumber + " " + std::to_string(state));
}
bool Player::FlowControlExit() {
  return false;
}
// Plays, so that a test can see what the derived class has connected; and asks for the caesura to be passed.
bool Player::Continue() {
  {
    exc::ScopeLock lock(*this);
    continueIsPending_ = true;
  }
  if (play_ && GetPlayerState() == PlayerState::PAUSE) play_();
  return true;
}
bool Player::RepeatSafety() {
  return false;
}
void Player::SetPlayerState(PlayerState state) {
  std::function<void(PlayerState)> hook;
  {
    const std::lock_guard lock(fakes::player::mutex);
    fakes::player::statesSet.push_back(state);
    hook = fakes::player::onSetState;
  }
  if (hook) hook(state);
  playerState_ = state;
}
void Player::SetActiveSongNumber(const std::string& songNumber) {
  Write("player.SetActiveSongNumber " + songNumber);
  activeSongNumber_.Set(songNumber);
}
unsigned Player::GetTickIndex() {
  return fakes::player::position;
}
void Player::ResetForRecovery() {
  Write("player.ResetForRecovery");
}
void Player::ResetForRecoveryAdvance() {
  Write("player.ResetForRecoveryAdvance");
}
