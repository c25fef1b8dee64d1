#pragma once

#include <string>

// Reports an exception that could not be passed on to the application's log: its message, the source file
// and the line at which it ended. Threads: ANY. Never throws.
void TeskLogException(const std::string& message, const std::string& sourceFile, int line);
