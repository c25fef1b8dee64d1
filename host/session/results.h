#pragma once

#include <ostream>

namespace orbel::host {

// Standard output: what a verb was asked for, and nothing else. Fails when it could not be written, or when
// nobody has read it a second after an interrupt.
//
// Threads    HOST.
std::ostream& Results();

}  // namespace orbel::host
