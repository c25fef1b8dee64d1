#include <algorithm>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/core/event_codes.h"
#include "suite/midi/change_log.h"
#include "suite/midi/how_to_play.h"
#include "suite/midi/song_data.h"

namespace {

bool IsSameLoop(const LoopEvent& a, const LoopEvent& b) {
  return a.targetTick == b.targetTick && a.tick == b.tick && a.kind == b.kind;
}

}  // namespace

// The position may lie a few samples past the first one of its tick, where a new cue on that tick would come
// too late. So on the tick itself only what was armed there stays armed, unless the position has just been
// jumped to.
void ShowControl::SetChangeLog(CL::ChangeLog& changeLog) {
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  State& state = *state_;
  state.changeLog = &changeLog;
  if (state.song == nullptr) return;
  const unsigned tick = tickIndex_;
  DropCuesBefore_(tick);
  const bool hasJustLanded = state.hasJustLanded;
  std::list<LoopEvent>& ahead = loopEvents_.GetEvents();
  const bool endsLoopHere = !ahead.empty() && ahead.front().tick == tick;
  const bool startsCutHere = state.nextCut < state.cuts.size() && state.cuts[state.nextCut].fromTick == tick;
  const bool hasCutHere = hasJustLanded || startsCutHere;
  const bool hasCaesuraHere = hasJustLanded || HasPendingCaesura();

  std::list<LoopEvent> before;
  before.splice(before.end(), ahead);
  before.splice(before.end(), state.loopsBehind);
  TakeCuesOf_(changeLog.GetSongLog(state.song->GetNumber()));
  KeepLoopsStillThere_(before);

  ArmFrom_(tick, Landing::Cut);
  state.hasJustLanded = hasJustLanded;
  if (endsLoopHere) ArmLoopsAfter_(tick - 1);
  while (!hasCutHere && state.nextCut < state.cuts.size() && state.cuts[state.nextCut].fromTick == tick) {
    ++state.nextCut;
  }
  ArmCaesurasFrom_(tick, hasCaesuraHere);
  GetHowToPlay().SetData(*state.log, state.song->GetTimeline(), tick);
}

void ShowControl::KeepLoopsStillThere_(std::list<LoopEvent>& before) {
  State& state = *state_;
  const LoopEvent* const armed = state.armedLoop ? state.armedLoop->loop : nullptr;
  const LoopEvent* armedNow = nullptr;
  for (LoopEvent& loop : state.loopsBehind) {
    const auto old = std::find_if(before.begin(), before.end(),
                                  [&](const LoopEvent& other) { return IsSameLoop(loop, other); });
    if (old == before.end()) continue;
    loop.done = old->done;
    loop.canceled = old->canceled;
    if (loop.kind == codes::kSafety) loop.limit = old->limit;
    if (&*old == armed) armedNow = &loop;
  }
  if (armedNow != nullptr) {
    state.armedLoop->loop = armedNow;
  } else {
    state.armedLoop.reset();
  }
  if (!state.performersJump) return;
  const Jump jump = *state.performersJump;
  const bool leavesALoop =
      std::any_of(state.loopsBehind.begin(), state.loopsBehind.end(), [&](const LoopEvent& loop) {
        return loop.tick == jump.toTick && loop.targetTick <= jump.fromTick && loop.GetCanceled();
      });
  if (!leavesALoop) state.performersJump.reset();
}
