#pragma once

#include <string>
#include <vector>

#include "host/session/script.h"

namespace orbel::host {

class Session;

// The output plays songs at the recorded tempo and key only. Throws Failure, which names file, line and cue,
// when the current song, a song that it runs into, or the script asks for anything else.
void RequireRecordedTempo(const Session& session, const std::vector<ScriptLine>& script,
                          const std::string& scriptName);

// Throws Failure, which names the line, when the script waits for a position, or seeks one, that no song has.
void RequireKnownPositions(const Session& session, const std::vector<ScriptLine>& script,
                           const std::string& scriptName);

}  // namespace orbel::host
