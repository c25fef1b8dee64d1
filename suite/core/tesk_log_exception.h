#pragma once

#include <string>

// Reports an exception that could not be passed on to the application's log: its message, the source file
// and the line at which it ended. Threads: ANY. Never throws.
void TeskLogException(const std::string& message, const std::string& sourceFile, int line);

// The same out of a handler that nothing may leave: without memory for the words, they are lost.
inline void TeskLogException(const char* message, const char* sourceFile, int line) noexcept {
  try {
    TeskLogException(std::string(message), std::string(sourceFile), line);
  } catch (...) {
    // There is nobody left to tell.
  }
}
