#include "suite/player_core/player.h"

#include "exc/lock/scope_lock.h"
#include "suite/core/gui_dispatcher.h"
#include "suite/player_core/content_argument.h"
#include "suite/player_core/gui_update.h"
#include "suite/player_core/show_control.h"

Player::Player(const std::string& showPath)
    : RLockable("Player"), showPath_(showPath), contentArgument_(player_core::GetContentArgument()) {}

Player::~Player() = default;

// What was asked for before playback starts is honoured by starting it.
void Player::SetPlayerState(PlayerState state) {
  playerState_ = state;
  if (state != PlayerState::PLAY) return;
  {
    exc::ScopeLock lock(*this);
    continueIsPending_ = false;
  }
  GetShowControl().LeaveCaesura();
}

void Player::SetActiveSongNumber(const std::string& songNumber) {
  activeSongNumber_.Set(songNumber);
  exc::ScopeLock lock(*this);
  continueIsPending_ = false;
}

unsigned Player::GetTickIndex() {
  return GetShowControl().GetTickIndex();
}

bool Player::CurrentSongIsAttacca() {
  if (!activeSongNumber_.IsSet()) return false;
  const std::string song = GetCurrentSongNumber();
  return GetShowControl().GetAttaccaState(song) != 0 && GetShowControl().HasSongWithAudioAfter(song);
}

void Player::SetAttaccaState(const std::string& songNumber, unsigned char state) {
  GetShowControl().SetAttaccaState(songNumber, state);
}

// Whoever has paused the updates while playback runs on shows the position afterwards: an attacca does.
// Asking in the middle of it would let the display go before the listener has come to the new song.
void Player::EnsureGuiIsCurrent() {
  if (IsPlaying() && GetGuiUpdate().IsPaused()) return;
  GetGuiUpdate().UpdateOnce();
}

// The last seek tick is the caesura's: the control position may be ahead of it again, for the output has been
// refilled.
void Player::GUINotifyCaesura() {
  notify::guiDispatcher.SendCaesura(GetCurrentSongNumber(), GetShowControl().GetLastSeekTickIndex());
}

void Player::ResetForRecovery() {
  exc::ScopeLock lock(*this);
  continueIsPending_ = false;
}

void Player::ResetForRecoveryAdvance() {
  exc::ScopeLock lock(*this);
  continueIsPending_ = false;
}
