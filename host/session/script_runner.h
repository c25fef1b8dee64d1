#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Sources/types.h"
#include "host/session/script.h"

namespace orbel::host {

// Follows a performance and tells which commands of a script are due. A position is reached when playback
// arrives at it or passes it, by playing or by landing on it. Every line acts once. Threads    one at a time.
class ScriptRunner {
 public:
  // A position of the script as a tick of the song that is current; nothing when the song has no such place.
  using FindTick = std::function<std::optional<TickIndex>(const std::string& position)>;

  explicit ScriptRunner(std::vector<ScriptLine> lines);

  // ---- what happens ----------------------------------------------------------------------------
  // A song becomes current and stands at `tick`.
  void OnSong(const FindTick& find, TickIndex tick);
  // Playback goes on at `tick`: a jump or a seek.
  void Land(TickIndex tick);
  // Playback has come to `tick` by playing.
  void PlayTo(TickIndex tick);
  // So many seconds of output are out.
  void SetTime(double seconds);

  // ---- what is due -----------------------------------------------------------------------------
  // The lines that became due since the last call, in the order of the file.
  std::vector<ScriptLine> TakeDue();
  // The next line for a stand at a caesura.
  std::optional<ScriptLine> TakeWaiting();

  // ---- what may still come ---------------------------------------------------------------------
  bool HasWaiting() const;
  // The earliest time that a line still waits for.
  std::optional<double> NextTime() const;
  // Whether any line can still act while playback stays in [from, to].
  bool CanActWithin(TickIndex from, TickIndex to) const;

 private:
  enum class State { Open, Due, Done };
  struct Entry {
    ScriptLine line;
    State state = State::Open;
    std::optional<TickIndex> tick;  // in the current song
    int arrivals = 0;
  };

  void Arrive_(Entry* entry);
  void Move_(TickIndex tick, bool landing);

  std::vector<Entry> entries_;
  TickIndex tick_ = 0;
};

}  // namespace orbel::host
