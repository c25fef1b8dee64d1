#pragma once

#include <functional>
#include <memory>

#include "exc/lock/rlockable.h"

class Player;
namespace tesk_midi {
class SongData;
}

namespace gui {

// Sends the position that the listener hears to the user interface, 60 times a second, from its own thread.
// Threads: ANY. Its lock is not held while the position is asked for or sent.
class GuiUpdate : public exc::RLockable {
 public:
  // `audibleTick` writes the audible tick and returns whether playback runs.
  GuiUpdate(Player& player, std::function<bool(unsigned*)> audibleTick);
  // Ends the thread.
  ~GuiUpdate() override;

  // Starts the thread, paused. Throws std::runtime_error when the system refuses one.
  void StartUpdateGenerator();

  // Returns when an update in progress has ended, unless called from within one. Never call it with a lock
  // held that the audible-tick query takes.
  void Pause();
  void Unpause();
  bool IsPaused();
  // Shows `tickIndex` and sends it.
  void ResetAndSeekToTickIndex(unsigned tickIndex);
  // Asks for the audible tick, shows and sends it, whatever the query answers.
  void UpdateOnce();
  // The tick shown last.
  unsigned GetTickIndex();

  // The song whose bars, keys and pages belong to the ticks from now on; it outlives the next call.
  void SetSong(const tesk_midi::SongData* song);

 private:
  struct State;
  class UpdateScope;
  std::unique_ptr<State> state_;
};

}  // namespace gui
