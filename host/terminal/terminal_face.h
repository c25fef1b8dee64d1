#pragma once

#include "host/session/live.h"

namespace orbel::host::terminal {

// Plays a show. With a terminal: one status line, and the keys. Without one: plain lines when something
// changes, and nobody at the keys. Returns the exit status. Throws Failure and the errors of the show.
// Threads    HOST, until it returns.
int Play(const PlayOptions& options, PlayReport* report);

}  // namespace orbel::host::terminal
