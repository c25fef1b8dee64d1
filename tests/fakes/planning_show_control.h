#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>

namespace tesk_midi {
class SongData;
}

// The base of show controls as read planning sees it: it finds those control events that a test says, and
// nothing of its own accord. What it is told goes to the journal as "base.OPERATION ARGUMENTS". One at a
// time: each new show control starts with a fresh script. Threads: the script belongs to the test's thread
// and is read while nobody changes it.
namespace fakes::planning {

// What one call of FindNextControlEventOnAdvance finds. By default nothing: the advance reaches its end.
struct Found {
  bool caesuraStop = false;
  bool jumpPending = false;
  bool replan = false;
  std::optional<unsigned> reachedTick = std::nullopt;  // also the jump's target
};

struct Script {
  const tesk_midi::SongData* song = nullptr;  // the loaded one
  std::deque<Found> found;                    // for the next calls, one each
  std::map<unsigned, unsigned> cuts;          // from tick, to tick
  bool seekMovesNothing = false;              // what Seek answers
  std::optional<unsigned> settlesAt;          // where RecoverySeek ends; otherwise where it was asked to
  bool writesJournal = true;
  // Called in the middle of the operation.
  std::function<void()> onProcessLoopEvents;
  std::function<void()> onFindOnAdvance;
  std::function<void()> onFindOnSeek;
  std::function<void()> onSetJump;
  std::function<void()> onFinishLoadingSongLog;
};

Script& GetScript();

}  // namespace fakes::planning
