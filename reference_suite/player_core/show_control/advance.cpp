#include <algorithm>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/core/gui_dispatcher.h"
#include "suite/midi/how_to_play.h"
#include "suite/midi/song_data.h"

namespace {

// The pass that begins when `loop`, already counted, is taken.
notify::LoopUpdate DescribePass(const LoopEvent& loop, const tesk_midi::SongData& song) {
  notify::LoopUpdate pass;
  pass.songNumber = song.GetNumber();
  pass.fromTick = loop.targetTick;
  pass.toTick = loop.tick;
  pass.kind = loop.kind;
  pass.pass = loop.done + 1;
  pass.passes = loop.limit == 0 ? 0 : loop.limit + 1;
  return pass;
}

}  // namespace

void ShowControl::FindNextControlEventOnAdvance(unsigned from, unsigned to) {
  std::optional<notify::LoopUpdate> pass;
  {
    exc::ScopeLock lock(*this);
    FindNextEvent_(from, to);
    State& state = *state_;
    if (state.pendingJump == State::PendingJump::Loop && state.song != nullptr) {
      state.untoldPass = DescribePass(*state.armedLoop->loop, *state.song);
    }
    // No listener is called with the lock held; a plan around this one would still hold it.
    if (state.untoldPass && state.lock.IsTakenOnce()) pass.swap(state.untoldPass);
  }
  // The jump is settled: the plan that asked takes it as soon as this returns.
  if (pass) notify::guiDispatcher.SendLoopPass(*pass);
}

void ShowControl::FindNextEvent_(unsigned from, unsigned to) {
  ClearFlags_();
  state_->pendingJump = State::PendingJump::None;
  if (tickIndex_ != from) {
    replan_ = true;
    reachedTickIndex_ = tickIndex_;
    return;
  }
  DropCuesBefore_(from);
  if (FindEventAt_(from)) return;
  state_->hasJustLanded = false;
  const unsigned event = GetFirstEventTickAfter_(from);
  // A read that ends inside `to` would play its first samples, so an event there is met by the next read.
  if (event > to) {
    reachedTickIndex_ = to;
  } else if (event < to) {
    reachedTickIndex_ = event;
  } else {
    reachedTickIndex_ = to - 1 > from ? to - 1 : to;
  }
}

bool ShowControl::FindEventAt_(unsigned tick) {
  State& state = *state_;
  unsigned target = tick;
  if (state.armedLoop && state.armedLoop->tick == tick) {
    state.pendingJump = State::PendingJump::Loop;
    target = state.armedLoop->loop->targetTick;
  } else if (state.performersJump && state.performersJump->fromTick == tick) {
    state.pendingJump = State::PendingJump::Performers;
    target = state.performersJump->toTick;
  } else if (HasCutAtTickIndex(tick, &target)) {
    // Nothing remembers that a cut is pending: taking it leaves it as it is.
  } else if (!pendingCaesuras_.empty() && pendingCaesuras_.front().GetTickIndex() == tick) {
    caesuraStop_ = true;
  } else {
    return false;
  }
  jumpPending_ = !caesuraStop_;
  reachedTickIndex_ = target;
  return true;
}

unsigned ShowControl::GetFirstEventTickAfter_(unsigned tick) {
  const State& state = *state_;
  unsigned first = GetHowToPlay().GetTickIndexOfNextDspEvent();
  for (const LoopEvent& loop : loopEvents_.GetEvents()) {
    if (loop.tick <= tick) continue;
    first = std::min(first, loop.tick);
    break;
  }
  if (state.nextCut < state.cuts.size()) first = std::min(first, state.cuts[state.nextCut].fromTick);
  if (state.performersJump) first = std::min(first, state.performersJump->fromTick);
  if (!pendingCaesuras_.empty()) first = std::min(first, pendingCaesuras_.front().GetTickIndex());
  return first;
}

void ShowControl::FindNextControlEventOnSeek(unsigned tick, bool userSeek) {
  exc::ScopeLock lock(*this);
  const bool isLoopBack = state_->pendingJump == State::PendingJump::Loop;
  ArmFrom_(tick, userSeek ? Landing::Seek : isLoopBack ? Landing::LoopBack : Landing::Cut);
}
