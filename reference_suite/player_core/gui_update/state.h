#pragma once

#include <pthread.h>

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "exc/condition/condition.h"
#include "reference_suite/player_core/gui_update/monotonic_condition.h"
#include "reference_suite/player_core/gui_update/song_positions.h"
#include "suite/player_core/gui_update.h"

namespace gui {

// The update generator and its thread. `lock` is the GuiUpdate itself.
//
// An update asks, shows and sends. Updates of several threads may overlap, so each takes a number when it
// begins: what an older one has asked for is never shown after what a newer one has shown, and whoever has
// sent a position goes on until the one sent last is the one shown last.
struct GuiUpdate::State {
  State(exc::ExLock& itself, Player& thePlayer, std::function<bool(unsigned*)> query)
      : lock(itself), player(thePlayer), audibleTick(std::move(query)) {
    updatingThreads.reserve(8);
  }

  using UpdateNumber = unsigned long long;

  // Marks this thread as inside an update; to be undone with EndUpdate.
  UpdateNumber BeginUpdate() EXC_HOLDS(lock);
  void EndUpdate();
  bool IsUpdatingOnThisThread() EXC_HOLDS(lock);

  // Shows `tick` unless something newer is shown. False when nothing is to be sent.
  bool Show(UpdateNumber number, unsigned tick, bool alsoWhenUnchanged);
  void SendShown();
  // Whether the listener still hears the end of the song before, into the bars of which the tick belongs.
  bool IsOfSongBefore(unsigned tick);

  // ---- generator.cpp: the thread ---------------------------------------------------------------
  void Run() noexcept;
  // Waits for the next turn and begins an update. False: the thread is to end.
  bool WaitForTurn(long long* nextTurn, UpdateNumber* number);
  void TakeTurn(UpdateNumber number) noexcept;
  void ReportOnce(const char* error) noexcept;

  exc::ExLock& lock;
  Player& player;
  const std::function<bool(unsigned*)> audibleTick;
  std::thread thread;
  MonotonicCondition wake;     // for the generator's thread
  exc::Condition updateEnded;  // for whoever pauses
  std::string lastError;       // the generator's thread only

  bool isPaused EXC_GUARDED_BY(lock) = true;
  bool isEnding EXC_GUARDED_BY(lock) = false;
  std::vector<pthread_t> updatingThreads EXC_GUARDED_BY(lock);
  UpdateNumber lastBegun EXC_GUARDED_BY(lock) = 0;
  UpdateNumber lastShown EXC_GUARDED_BY(lock) = 0;
  unsigned shownTick EXC_GUARDED_BY(lock) = 0;
  std::optional<unsigned> lastOfSongBefore EXC_GUARDED_BY(lock);  // until the listener has come further
  notify::PositionUpdate shownPosition EXC_GUARDED_BY(lock);
  SongPositions song EXC_GUARDED_BY(lock);
};

}  // namespace gui
