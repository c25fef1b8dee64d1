#pragma once

#include <string>

namespace orbel::host {

// A line of the audio library about a recording, "WARNING: /shows/first/data/1 Waltz.obd: ... .", in the
// words of the check, wherever it comes up: the file as the show has it, and what to do. That a recording is
// resampled needs nothing done. Any other line stays as it is. Threads: ANY.
std::string AsTheCheckSays(const std::string& line);

}  // namespace orbel::host
