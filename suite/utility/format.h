#pragma once

#include <string>

namespace exc {

// printf-style formatting into a string of any length. The compiler checks the arguments.
// Throws std::runtime_error when the format cannot be carried out.
[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...);

}  // namespace exc
