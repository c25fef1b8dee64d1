#include "host/session/vamp_leaver.h"

#include <algorithm>

#include "suite/core/event_codes.h"
#include "suite/midi/song_log.h"
#include "suite/midi/timeline.h"
#include "suite/player_core/jump.h"

namespace orbel::host {

void VampLeaver::OnJump(TickIndex from, TickIndex to, const CL::SongLog& log) {
  if (to >= from) return;
  // A passage inside the one that begins again begins again itself.
  std::erase_if(taken_, [&](const auto& entry) {
    const auto [innerFrom, innerTo] = entry.first;
    return entry.first != std::pair(from, to) && innerTo >= to && innerFrom <= from;
  });
  const bool isVamp = std::any_of(log.loops.begin(), log.loops.end(), [&](const CL::Loop& loop) {
    return loop.GetEventCode() == codes::kVamp && loop.abs_time() == to && loop.GetEndTime() == from;
  });
  if (isVamp) ++taken_[{from, to}];
}

bool VampLeaver::ShouldSayGo(const Jump& next, TickIndex position, const CL::SongLog& log,
                             const TL::Timeline& timeline) const {
  const bool inVamp = next.kind == codes::kVamp && next.toTick <= position && position < next.fromTick;
  if (!inVamp) return false;
  const auto taken = taken_.find({next.fromTick, next.toTick});
  const int pass = 1 + (taken == taken_.end() ? 0 : taken->second);
  if (pass < passes_) return false;
  for (const CL::Loop& loop : log.loops) {
    if (loop.abs_time() != next.toTick || loop.GetEndTime() != next.fromTick) continue;
    if (loop.GetExit() == CL::VampExit::NextBar) return position > timeline.GetBarStart(next.fromTick - 1);
    if (loop.GetExit() == CL::VampExit::NextBeat) return position > timeline.GetBeatStart(next.fromTick - 1);
  }
  return true;
}

bool VampLeaver::IsStuck() const {
  return std::any_of(taken_.begin(), taken_.end(),
                     [&](const auto& entry) { return entry.second > passes_ + 1; });
}

}  // namespace orbel::host
