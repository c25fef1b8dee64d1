#pragma once

#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "exc/lock/basic_lock.h"
#include "exc/lock/rlockable.h"
#include "suite/player_core/show_control.h"

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
  enum class PendingJump { None, Loop, Performers, Cut };

  exc::RLockable readSamples{"ReadSamples"};
  exc::basic_rlock<false> lock{"ShowControl"};

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

  // ---- position --------------------------------------------------------------------------------
  unsigned lastSeekTick = 0;
  // The position is the first sample of its tick, because it was jumped to and nothing has been planned
  // since.
  bool hasJustLanded = false;
  bool fermataIsCanceled = false;
  bool standsAtCaesura = false;

  std::map<std::string, unsigned char> attaccaStates;  // as set by the host; else the log's hold
};

namespace show_control {

// Whether the loop would be taken on arriving at its end now.
inline bool MayBeTaken(const LoopEvent& loop) {
  return !loop.GetCanceled() && (loop.limit == 0 || loop.done < loop.limit);
}

}  // namespace show_control
