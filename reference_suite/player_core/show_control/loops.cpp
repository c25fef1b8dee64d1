#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/core/event_codes.h"

using show_control::MayBeTaken;

// All loops that end here leave the list, also those that are not taken: planning takes the first event of
// the list to lie ahead.
void ShowControl::ProcessLoopEventsAtCurrentTickIndex() {
  exc::ScopeLock lock(*this);
  const unsigned tick = tickIndex_;
  if (state_->armedLoop && state_->armedLoop->tick == tick) return;
  state_->armedLoop.reset();
  std::list<LoopEvent>& ahead = loopEvents_.GetEvents();
  std::list<LoopEvent>& behind = state_->loopsBehind;
  LoopEvent* taken = nullptr;
  while (!ahead.empty() && ahead.front().tick <= tick) {
    behind.splice(behind.end(), ahead, ahead.begin());
    LoopEvent& loop = behind.back();
    const bool isInner = taken == nullptr || loop.targetTick > taken->targetTick;
    if (loop.tick == tick && MayBeTaken(loop) && isInner) taken = &loop;
  }
  if (taken == nullptr) return;
  ++taken->done;
  state_->armedLoop = State::ArmedLoop{tick, taken};
}

bool ShowControl::GetNextJump(Jump* jump) {
  exc::ScopeLock lock(*this);
  const State& state = *state_;
  if (state.armedLoop && state.armedLoop->tick == tickIndex_) {
    *jump = Jump{state.armedLoop->tick, state.armedLoop->loop->targetTick, state.armedLoop->loop->kind};
    return true;
  }
  bool isFound = false;
  // Offered in the order in which they come at one tick.
  const auto offer = [&](const Jump& candidate) {
    if (isFound && candidate.fromTick >= jump->fromTick) return;
    *jump = candidate;
    isFound = true;
  };
  const LoopEvent* next = nullptr;
  for (const LoopEvent& loop : loopEvents_.GetEvents()) {
    if (next != nullptr && loop.tick > next->tick) break;
    if (!MayBeTaken(loop)) continue;
    if (next == nullptr || loop.targetTick > next->targetTick) next = &loop;
  }
  if (next != nullptr) offer(Jump{next->tick, next->targetTick, next->kind});
  if (state.performersJump) offer(*state.performersJump);
  if (state.nextCut < state.cuts.size()) {
    const State::CutEvent& cut = state.cuts[state.nextCut];
    offer(Jump{cut.fromTick, cut.toTick, codes::kCut});
  }
  return isFound;
}
