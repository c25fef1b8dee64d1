#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Sources/types.h"
#include "host/session/script_runner.h"
#include "host/session/vamp_leaver.h"

namespace orbel::host {

class Session;

// What to do where a performer would decide.
struct Directions {
  std::string scriptName;                         // for messages
  std::optional<std::vector<ScriptLine>> script;  // only it acts, when there is one
  int vampPasses = 1;                             // without a script: how often a vamp is played in all
  double caesuraSilence = 0.0;                    // without a script: seconds of wait at a caesura
};

// With the script of that name read, unless it is empty. Throws Failure when it cannot be read.
Directions ReadDirections(const std::string& scriptName, int vampPasses, double caesuraSilence);

// Stands in for the performer: looks at the position between two reads and acts as the directions say.
// Threads    HOST.
class Conductor {
 public:
  Conductor(Session& session, Directions directions);

  // ---- what happens ----------------------------------------------------------------------------
  // The session stands at the start of what it is to play, or a song has begun by attacca.
  void OnSong();
  // The same for one that stands where it was loaded: what has been rendered ahead is not reached yet.
  void OnStandingSong();
  // And for one that has begun at its start, and has been played on from there.
  void OnBegunSong();
  void OnJump(TickIndex from, TickIndex to);
  void OnPosition(TickIndex tick);
  void OnTime(double seconds);

  // Carries out what is due. Returns the commands. Throws Failure with the script's name and line.
  std::vector<Command> Act();

  // ---- while playback stands -------------------------------------------------------------------
  enum class Standing {
    GoesOn,      // after `silence` seconds; Resume then says go
    ScriptEnds,  // the script has nothing more to say
  };
  // `atCaesura` false: playback was paused or stopped by the script.
  Standing LookWhileStanding(bool atCaesura, double now, double* silence);
  // Returns the commands that were carried out; playback may still stand.
  std::vector<Command> Resume(bool atCaesura, double now);

  // A vamp goes on and nothing that is left will leave it.
  bool IsStuck() const { return stuck_; }

 private:
  void BeginSong_(TickIndex tick);
  void Carry_(const ScriptLine& line);
  bool IsVamp_(TickIndex from, TickIndex to) const;

  Session& session_;
  const Directions directions_;
  ScriptRunner script_;
  VampLeaver leaver_;
  // Vamps begun again since anything was last done.
  std::set<std::pair<TickIndex, TickIndex>> idlePasses_;
  bool stuck_ = false;
};

}  // namespace orbel::host
