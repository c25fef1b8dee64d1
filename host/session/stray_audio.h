#pragma once

#include <vector>

#include "suite/midi/load_show.h"

namespace orbel::host {

class ShowFolder;

// Audio files whose song does not exist: the show cannot be opened with them.
std::vector<tesk_midi::Problem> FindStrayAudio(const ShowFolder& show);

// Throws Failure that says them all, and first what the engine would say of them.
void RequireASongForAllAudio(const ShowFolder& show);

}  // namespace orbel::host
