#pragma once

#include <string>

namespace reference_core {

// `text` as one line that cannot steer a terminal: control characters are written as \n, \t, \x1b and so on.
// Other bytes stay.
std::string OneLine(const std::string& text);

}  // namespace reference_core
