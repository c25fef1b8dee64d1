#include <algorithm>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/core/event_codes.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"

using show_control::MayBeTaken;

namespace {

// The innermost of the loops around `tick` that `isWanted`; null when there is none. The list is in the order
// in which the loops end: of two that begin together the first is the inner one.
template <typename IsWanted>
LoopEvent* FindInnermostAround(std::list<LoopEvent>& loops, unsigned tick, IsWanted isWanted) {
  LoopEvent* innermost = nullptr;
  for (LoopEvent& loop : loops) {
    if (loop.targetTick > tick || loop.tick <= tick || !isWanted(loop)) continue;
    if (innermost == nullptr || loop.targetTick > innermost->targetTick) innermost = &loop;
  }
  return innermost;
}

CL::VampExit GetExitOf(const LoopEvent& vamp, const CL::SongLog& log) {
  for (const CL::Loop& loop : log.loops) {
    const bool isIt = loop.GetEventCode() == vamp.kind && loop.abs_time() == vamp.targetTick &&
                      loop.GetEndTime() == vamp.tick;
    if (isIt) return loop.GetExit();
  }
  return CL::VampExit::EndOfPass;
}

}  // namespace

bool ShowControl::ExitLoop() {
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  const unsigned tick = tickIndex_;
  LoopEvent* const loop = FindInnermostAround(loopEvents_.GetEvents(), tick, MayBeTaken);
  if (loop == nullptr) return false;
  loop->canceled |= 1;
  if (!loop->is_vamp()) return true;
  const CL::VampExit exit = GetExitOf(*loop, *state_->log);
  if (exit == CL::VampExit::EndOfPass) return true;
  // The line at the position itself may have been passed by a few samples already.
  const TL::Timeline& timeline = state_->song->GetTimeline();
  const unsigned line = exit == CL::VampExit::NextBar ? timeline.GetBarLineAtOrAfter(tick + 1)
                                                      : timeline.GetBeatAtOrAfter(tick + 1);
  if (line < loop->tick) state_->performersJump = Jump{line, loop->tick, codes::kCut};
  return true;
}

bool ShowControl::RepeatSafety() {
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  LoopEvent* const safety = FindInnermostAround(
      loopEvents_.GetEvents(), tickIndex_, [](const LoopEvent& loop) { return loop.kind == codes::kSafety; });
  if (safety == nullptr) return false;
  // Asked again after a go: what was asked for before the go stays forgotten.
  if (safety->GetCanceled()) safety->limit = safety->done;
  safety->canceled = 0;
  safety->limit = std::max(safety->limit, safety->done) + 1;
  return true;
}

bool ShowControl::GetPerformersJump(Jump* jump) {
  exc::ScopeLock lock(*this);
  if (!state_->performersJump) return false;
  *jump = *state_->performersJump;
  return true;
}

void ShowControl::ClearPerformersJump() {
  exc::ScopeLock samples(state_->readSamples);
  exc::ScopeLock lock(*this);
  state_->performersJump.reset();
}
