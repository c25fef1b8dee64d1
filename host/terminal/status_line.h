#pragma once

#include <cstddef>
#include <string>

#include "host/session/live.h"

namespace orbel::host::terminal {

// "1 Overture   bar 12.3   120 bpm   playing   next: 13.1 vamp back to 9.1", and what the sound is up to when
// that is known; cut to `columns` characters, of which the song's name is the first to give way.
std::string StatusLine(const StageStatus& status, std::size_t columns);

// The first `count` characters, never half of one.
std::string FirstCharacters(const std::string& text, std::size_t count);

}  // namespace orbel::host::terminal
