#include <algorithm>

#include "reference_suite/player_core/show_control/state.h"
#include "suite/core/event_codes.h"

using show_control::MayBeTaken;

namespace {

void Reset(LoopEvent& loop) {
  loop.done = 0;
  loop.canceled = 0;
  if (loop.kind == codes::kSafety) loop.limit = -1;  // nobody has asked for it in this run
}

// Strictly: of two loops over the same passage neither is inside the other, or each would start the other
// anew for ever.
bool LiesInside(const LoopEvent& inner, const LoopEvent& outer) {
  const bool isWithin = inner.targetTick >= outer.targetTick && inner.tick <= outer.tick;
  const bool isSame = inner.targetTick == outer.targetTick && inner.tick == outer.tick;
  return isWithin && !isSame;
}

// The order in which playback meets loops. At one tick those come first that will be taken, because the first
// vamp or repeat of the list tells the output whether a jump is due; then the innermost.
bool ComesBefore(const LoopEvent& a, const LoopEvent& b) {
  if (a.tick != b.tick) return a.tick < b.tick;
  if (MayBeTaken(a) != MayBeTaken(b)) return MayBeTaken(a);
  return a.targetTick > b.targetTick;
}

}  // namespace

void ShowControl::ArmFrom_(unsigned tick, Landing landing) {
  ResetLoopsFor_(tick, landing);
  ArmLoopsAfter_(tick);
  std::vector<State::CutEvent>& cuts = state_->cuts;
  const auto nextCut =
      std::lower_bound(cuts.begin(), cuts.end(), tick,
                       [](const State::CutEvent& cut, unsigned wanted) { return cut.fromTick < wanted; });
  state_->nextCut = static_cast<std::size_t>(nextCut - cuts.begin());
  // A passage that begins with a caesura is repeated without stopping there again.
  ArmCaesurasFrom_(tick, landing != Landing::LoopBack);
  if (state_->performersJump && state_->performersJump->fromTick < tick) state_->performersJump.reset();
  state_->hasJustLanded = landing != Landing::LoopBack;
}

void ShowControl::ResetLoopsFor_(unsigned tick, Landing landing) {
  const LoopEvent* const taken = state_->armedLoop ? state_->armedLoop->loop : nullptr;
  const auto isToBeReset = [&](const LoopEvent& loop) {
    switch (landing) {
      case Landing::Seek:
        return loop.tick > tick;
      case Landing::Recovery:
        return loop.targetTick > tick;
      case Landing::LoopBack:
        return taken != nullptr && LiesInside(loop, *taken);
      case Landing::Cut:
        return false;
    }
    return false;
  };
  for (std::list<LoopEvent>* loops : {&loopEvents_.GetEvents(), &state_->loopsBehind}) {
    for (LoopEvent& loop : *loops) {
      if (isToBeReset(loop)) Reset(loop);
    }
  }
}

// Moves list elements only: this runs between two reads.
void ShowControl::ArmLoopsAfter_(unsigned tick) {
  std::list<LoopEvent>& ahead = loopEvents_.GetEvents();
  std::list<LoopEvent>& behind = state_->loopsBehind;
  ahead.splice(ahead.end(), behind);
  ahead.sort(ComesBefore);
  const auto firstAhead =
      std::find_if(ahead.begin(), ahead.end(), [=](const LoopEvent& loop) { return loop.tick > tick; });
  behind.splice(behind.end(), ahead, ahead.begin(), firstAhead);
}

// The deque is filled from the front, where it has been emptied, so that it stays within its memory (of which
// it takes a new piece for every 128 caesuras).
void ShowControl::ArmCaesurasFrom_(unsigned tick, bool alsoOnIt) {
  const std::vector<unsigned>& all = state_->caesuras;
  const auto first = alsoOnIt ? std::lower_bound(all.begin(), all.end(), tick)
                              : std::upper_bound(all.begin(), all.end(), tick);
  const auto count = static_cast<std::size_t>(all.end() - first);
  while (pendingCaesuras_.size() > count) pendingCaesuras_.pop_front();
  while (pendingCaesuras_.size() < count) {
    pendingCaesuras_.push_front(CountdownCaesura(all[all.size() - pendingCaesuras_.size() - 1]));
  }
}

void ShowControl::DropCuesBefore_(unsigned tick) {
  std::list<LoopEvent>& ahead = loopEvents_.GetEvents();
  while (!ahead.empty() && ahead.front().tick < tick) {
    state_->loopsBehind.splice(state_->loopsBehind.end(), ahead, ahead.begin());
  }
  const std::vector<State::CutEvent>& cuts = state_->cuts;
  while (state_->nextCut < cuts.size() && cuts[state_->nextCut].fromTick < tick) ++state_->nextCut;
  while (!pendingCaesuras_.empty() && pendingCaesuras_.front().GetTickIndex() < tick) {
    pendingCaesuras_.pop_front();
  }
  if (state_->performersJump && state_->performersJump->fromTick < tick) state_->performersJump.reset();
}

void ShowControl::ClearFlags_() {
  caesuraStop_ = false;
  jumpPending_ = false;
  replan_ = false;
}

void ShowControl::ClearJumps_() {
  state_->armedLoop.reset();
  state_->performersJump.reset();
  state_->pendingJump = State::PendingJump::None;
}
