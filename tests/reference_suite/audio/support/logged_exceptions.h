#pragma once

#include <string>

// This program's own log of exceptions that could not be passed on, in place of the suite's.
namespace logged_exceptions {

// The messages since the last call, one a line.
std::string Take();

}  // namespace logged_exceptions
