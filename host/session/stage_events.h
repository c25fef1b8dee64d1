#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Sources/types.h"
#include "suite/core/device_update.h"
#include "suite/core/gui_dispatcher.h"
#include "suite/core/meters_update.h"

namespace orbel::host {

// Something that happened in the player, as it is handed to the host thread.
struct StageEvent {
  enum class Kind { SongLoaded, Caesura, LoopPass, EndOfSong, LoadFailed, AttaccaBrokenOff };
  Kind kind = Kind::SongLoaded;
  std::string song;
  TickIndex fromTick = 0;  // LoopPass: start of the loop; Caesura: its tick
  TickIndex toTick = 0;    // LoopPass: end of the loop
  int pass = 1;            // LoopPass: the pass that begins
};

// Collects what the player tells its listeners, for the host thread to take.
// Threads    the listener's operations come from ANY thread and return at once; Take and GetPosition: HOST.
class StageEvents : private notify::GuiListener {
 public:
  StageEvents();
  ~StageEvents() override;
  StageEvents(const StageEvents&) = delete;
  StageEvents& operator=(const StageEvents&) = delete;

  // The oldest event not yet taken.
  std::optional<StageEvent> Take();
  void Clear();
  // What has become of the audio device, oldest first. Clear leaves it.
  std::vector<notify::DeviceUpdate> TakeDeviceUpdates();
  // How the output was doing last, once; nothing when that was taken already. The peaks are those since it
  // was taken before.
  std::optional<notify::MetersUpdate> TakeMeters();
  // Where the listener was last; the default before the first update.
  notify::PositionUpdate GetPosition() const;

 private:
  void OnPlayerException() override;
  void OnSongLoaded(const std::string& songNumber) override;
  void OnPosition(const notify::PositionUpdate& update) override;
  void OnCaesura(const std::string& songNumber, unsigned tickIndex) override;
  void OnLoopPass(const notify::LoopUpdate& update) override;
  void Put_(StageEvent event);
  void PutMeters_(notify::MetersUpdate meters);

  mutable std::mutex mutex_;  // guards what is below; innermost, nothing is called with it held
  std::deque<StageEvent> events_;
  std::vector<notify::DeviceUpdate> deviceUpdates_;
  std::optional<notify::MetersUpdate> meters_;
  notify::PositionUpdate position_;
};

}  // namespace orbel::host
