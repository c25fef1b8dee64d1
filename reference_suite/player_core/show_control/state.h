#pragma once

#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "exc/lock/basic_lock.h"
#include "exc/lock/rlockable.h"
#include "suite/core/gui_dispatcher.h"
#include "suite/player_core/show_control.h"

namespace show_control {

// A recursive lock that knows how often its holder has taken it.
class CountedLock : public exc::basic_rlock<false> {
 public:
  using exc::basic_rlock<false>::basic_rlock;

  void Lock() EXC_TAKES() override {
    basic_rlock::Lock();
    ++depth_;
  }
  void Unlock() EXC_GIVES_UP() override {
    --depth_;
    basic_rlock::Unlock();
  }
  bool TryLock() EXC_TRIES(true) override {
    if (!basic_rlock::TryLock()) return false;
    ++depth_;
    return true;
  }
  // For the holder: whether giving the lock up once frees it.
  bool IsTakenOnce() const { return depth_ == 1; }

 private:
  int depth_ = 0;  // the holder's alone
};

// Whether the loop would be taken on arriving at its end now.
inline bool MayBeTaken(const LoopEvent& loop) {
  return !loop.GetCanceled() && (loop.limit == 0 || loop.done < loop.limit);
}

}  // namespace show_control

// What the show control keeps to itself. Everything but the two locks and the references is guarded by the
// show control's lock.
struct ShowControl::State {
  State(ActiveSongNumber& songNumber, tesk_midi::ShowData& show, const CL::ChangeLog* cues)
      : activeSongNumber(songNumber), showData(show), changeLog(cues) {}

  // A loop jump that has been counted and is taken by the next plan. The loop is an element of loopsBehind.
  struct ArmedLoop {
    unsigned tick = 0;
    const LoopEvent* loop = nullptr;
  };
  struct CutEvent {
    unsigned fromTick = 0;
    unsigned toTick = 0;
  };
  // Whose jump the last advance has found.
  enum class PendingJump { None, Loop, Performers };

  exc::RLockable readSamples{"ReadSamples"};
  show_control::CountedLock lock{"ShowControl"};

  ActiveSongNumber& activeSongNumber;
  tesk_midi::ShowData& showData;
  const CL::ChangeLog* changeLog;  // may be null: no song has cues

  // ---- the loaded song; null: none -------------------------------------------------------------
  const tesk_midi::SongData* song = nullptr;
  const CL::SongLog* log = nullptr;

  // ---- its cues --------------------------------------------------------------------------------
  // The loops that do not lie ahead. Elements move between this list and the list of loops ahead and are
  // never made anew while the song plays.
  std::list<LoopEvent> loopsBehind;
  std::vector<CutEvent> cuts;  // in order of fromTick
  std::size_t nextCut = 0;     // the first that lies ahead
  // In ascending order. The pending caesuras are always the last ones of these.
  std::vector<unsigned> caesuras;
  std::optional<ArmedLoop> armedLoop;
  std::optional<Jump> performersJump;
  PendingJump pendingJump = PendingJump::None;
  // A pass that listeners have not been told of, because a plan within a plan has taken the loop and the plan
  // around it holds locks.
  std::optional<notify::LoopUpdate> untoldPass;

  // ---- position --------------------------------------------------------------------------------
  unsigned lastSeekTick = 0;
  // The position is the first sample of its tick, because it was jumped to and nothing has been planned
  // since.
  bool hasJustLanded = false;
  bool fermataIsCanceled = false;
  bool standsAtCaesura = false;

  std::map<std::string, unsigned char> attaccaStates;  // as set by the host; else the log's hold
};
