#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/bar_grid.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/midi/song_data.h"

bool ShowControl::HasPendingCaesura() {
  exc::ScopeLock lock(*this);
  return !pendingCaesuras_.empty() && pendingCaesuras_.front().GetTickIndex() == tickIndex_;
}

void ShowControl::OnCaesuraStop() {
  exc::ScopeLock samples(state_->readSamples);
  {
    exc::ScopeLock lock(*this);
    const unsigned tick = tickIndex_;
    while (!pendingCaesuras_.empty() && pendingCaesuras_.front().GetTickIndex() <= tick) {
      pendingCaesuras_.pop_front();
    }
    caesuraStop_ = false;
    state_->lastSeekTick = tick;
    state_->standsAtCaesura = true;
    state_->hasJustLanded = false;
    // A go that came too late to pass this one by must not pass the next one by.
    state_->fermataIsCanceled = false;
  }
  ResetGuiUpdate();
}

long long ShowControl::GetCaesuraCountdown() {
  exc::ScopeLock lock(*this);
  if (pendingCaesuras_.empty()) return -1;
  return static_cast<long long>(pendingCaesuras_.front().GetTickIndex()) - tickIndex_;
}

unsigned ShowControl::GetFirstCaesuraStackTickIndex() {
  exc::ScopeLock lock(*this);
  return pendingCaesuras_.empty() ? 0 : pendingCaesuras_.front().GetTickIndex();
}

unsigned ShowControl::GetCaesuraTickIndexAlignedWithClock(unsigned tickIndex) {
  exc::ScopeLock lock(*this);
  return state_->song == nullptr ? tickIndex : state_->song->GetTimeline().GetBeatAtOrAfter(tickIndex);
}

bool ShowControl::GetFermataCanceledCaesura() {
  exc::ScopeLock lock(*this);
  return state_->fermataIsCanceled;
}

// The player asks this once for every stop, after it has read the flag: from here on a stop that has not been
// called off happens, and a go means to go on afterwards. One that has been called off has left the deque.
void ShowControl::ClearFermataCanceledCaesura() {
  exc::ScopeLock lock(*this);
  const bool isAtPosition =
      !pendingCaesuras_.empty() && pendingCaesuras_.front().GetTickIndex() == tickIndex_;
  if (isAtPosition) state_->standsAtCaesura = true;
  state_->fermataIsCanceled = false;
}

bool ShowControl::StandsAtCaesura() {
  exc::ScopeLock lock(*this);
  return state_->standsAtCaesura;
}

void ShowControl::LeaveCaesura() {
  exc::ScopeLock lock(*this);
  state_->standsAtCaesura = false;
}

// With the read-samples lock held no read is being planned, so the flags say how the last plan ended: with a
// stop at the caesura, with a jump onto it, or, at the end of the song, without a word.
bool ShowControl::CancelCaesura(bool* alreadyReached) {
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  *alreadyReached = false;
  if (pendingCaesuras_.empty() || state_->song == nullptr) return false;
  const unsigned position = tickIndex_;
  const unsigned tick = pendingCaesuras_.front().GetTickIndex();
  if (tick < position || tick - position > player_core::GetTicksPerBar(*state_->song, position)) return false;
  *alreadyReached = tick == position && (caesuraStop_ || jumpPending_ || position >= GetEndTickIndex());
  if (*alreadyReached) state_->fermataIsCanceled = true;
  pendingCaesuras_.pop_front();
  return true;
}
