#pragma once

#include <string>
#include <vector>

#include "host/session/script.h"

namespace orbel::host {

class Session;

// Throws Failure, which names the line, when the script waits for a position, or seeks one, that no song has.
void RequireKnownPositions(const Session& session, const std::vector<ScriptLine>& script,
                           const std::string& scriptName);

}  // namespace orbel::host
