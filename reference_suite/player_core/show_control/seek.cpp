#include <algorithm>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"

bool ShowControl::Seek(unsigned tickIndex) {
  return SeekTo_(tickIndex);
}

bool ShowControl::FullReset() {
  exc::ScopeLock samples(state_->readSamples);
  ResetControlVariables();
  return SeekTo_(GetStartTickIndex());
}

// A seek to a place before the audio means the start of the song.
bool ShowControl::SeekTo_(unsigned tick) {
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  if (state_->song == nullptr) return true;
  tick = std::max(tick, GetStartTickIndex());
  ArmFrom_(tick, Landing::Seek);
  SetJump(tick, lock, false);
  SettleAt_(tick);
  return false;
}

unsigned ShowControl::RecoverySeek(unsigned tick) {
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  tick = std::max(GetStartTickIndex(), std::min(tick, GetEndTickIndex()));
  ArmFrom_(tick, Landing::Recovery);
  ShowControl::SetJump(tick, lock, false);
  SettleAt_(tick);
  return tick;
}

// What every move that is not playback has in common. A plan that is under way starts again from here.
void ShowControl::SettleAt_(unsigned tick) {
  ClearFlags_();
  ClearJumps_();
  replan_ = true;
  reachedTickIndex_ = tick;
  state_->lastSeekTick = tick;
  state_->fermataIsCanceled = false;
  state_->standsAtCaesura = false;
}

void ShowControl::ResetControlVariables() {
  exc::ScopeLock lock(*this);
  ClearFlags_();
  ClearJumps_();
  dspTempoScale_ = 1.0;
  dspTransposition_ = 0;
}

unsigned ShowControl::GetLastSeekTickIndex() {
  exc::ScopeLock lock(*this);
  return state_->lastSeekTick;
}
