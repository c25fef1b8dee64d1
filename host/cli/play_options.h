#pragma once

#include "host/session/live.h"

namespace CLI {
class App;
}

namespace orbel::host::cli {

// The options of play that choose where the sound goes and how it is carried there. `options` lives as long
// as `verb`.
void AddSoundOptions(CLI::App& verb, PlayOptions& options);

}  // namespace orbel::host::cli
