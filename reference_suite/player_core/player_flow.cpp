#include <chrono>
#include <thread>

#include "exc/lock/scope_lock.h"
#include "suite/player_core/player.h"
#include "suite/player_core/show_control.h"

namespace {

// A stop takes no longer than to refill the output.
constexpr std::chrono::milliseconds kLongestStop(500);

// While the render thread is stopping at a caesura, which it no longer can be kept from. No lock is held.
void WaitForStopAtCaesura(const Player& player, ShowControl& showControl) {
  const auto deadline = std::chrono::steady_clock::now() + kLongestStop;
  while (player.IsPlaying() && showControl.StandsAtCaesura()) {
    if (std::chrono::steady_clock::now() > deadline) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace

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
  if (IsPlaying() && showControl.StandsAtCaesura()) {
    WaitForStopAtCaesura(*this, showControl);
    if (!showControl.StandsAtCaesura()) return true;  // it has been passed through
  }
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
