#include "exc/lock/scope_lock.h"
#include "suite/player_core/player.h"
#include "suite/player_core/show_control.h"

bool Player::HasPendingCaesura() {
  return GetShowControl().HasPendingCaesura();
}

bool Player::GetFermataCanceledCaesura() {
  return GetShowControl().GetFermataCanceledCaesura();
}

bool Player::GetJump(Jump* jump) {
  return GetShowControl().GetPerformersJump(jump);
}

void Player::ClearJump() {
  GetShowControl().ClearPerformersJump();
}

bool Player::GetJumpForVampRepeatOrCut(Jump* jump) {
  return GetShowControl().GetNextJump(jump);
}

bool Player::FlowControlExit() {
  return GetShowControl().ExitLoop();
}

bool Player::RepeatSafety() {
  return GetShowControl().RepeatSafety();
}

bool Player::Continue() {
  ShowControl& showControl = GetShowControl();
  if (GetPlayerState() == PlayerState::PAUSE && showControl.StandsAtCaesura()) {
    if (play_) play_();
    return true;
  }
  if (!IsPlaying()) return false;
  // The caesura and the pending flag change together: between them no render step may stop there. The
  // read-samples lock is always the first of the two.
  exc::ScopeLock samples(showControl.GetReadSamplesLock());
  exc::ScopeLock lock(*this);
  bool isAlreadyReached = false;
  if (!showControl.CancelCaesura(&isAlreadyReached)) return false;
  if (isAlreadyReached) continueIsPending_ = true;
  return true;
}
