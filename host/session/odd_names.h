#pragma once

#include <vector>

#include "suite/midi/load_show.h"

namespace orbel::host {

class ShowFolder;

// Files that are read by their number although their name is that of another song, which may be a slip, and
// files in "songs" that nobody reads. All of them are warnings.
// Threads    ANY, one at a time.
std::vector<tesk_midi::Problem> FindOddNames(const ShowFolder& show);

}  // namespace orbel::host
