#pragma once

#include <cstddef>
#include <string>

#include "host/session/live.h"

namespace orbel::host::terminal {

// "1 Overture   bar 12.3   120 bpm   playing   next: 13.1 vamp back to 9.1", cut to `columns` characters.
std::string StatusLine(const StageStatus& status, std::size_t columns);

}  // namespace orbel::host::terminal
