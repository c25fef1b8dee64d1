#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/midi/how_to_play.h"

// `lock` is for overrides, which may have to give it up; here it stays held.
void ShowControl::SetJump(unsigned tickIndex, exc::ExLock& /*lock*/, bool /*skipAhead*/) {
  exc::ScopeLock held(*this);
  if (state_->pendingJump == State::PendingJump::Performers) state_->performersJump.reset();
  state_->pendingJump = State::PendingJump::None;
  state_->armedLoop.reset();
  tickIndex_ = tickIndex;
  GetHowToPlay().Seek(tickIndex);
}

void ShowControl::DoSkipAhead(unsigned tick) {
  exc::ScopeLock lock(*this);
  tickIndex_ = tick;
  GetHowToPlay().AdvanceToTickIndex(tick);
  DropCuesBefore_(tick);
  state_->hasJustLanded = false;
}

bool ShowControl::HasCutAtTickIndex(unsigned tick, unsigned* target) {
  exc::ScopeLock lock(*this);
  const State& state = *state_;
  if (state.performersJump && state.performersJump->fromTick == tick) {
    *target = state.performersJump->toTick;
    return true;
  }
  for (std::size_t i = state.nextCut; i < state.cuts.size() && state.cuts[i].fromTick <= tick; ++i) {
    if (state.cuts[i].fromTick != tick) continue;
    *target = state.cuts[i].toTick;
    return true;
  }
  return false;
}
