#include "suite/core/tesk_log_exception.h"

#include "suite/core/log_sink.h"

void TeskLogException(const std::string& message, const std::string& sourceFile, int line) {
  try {
    tesk_log::WriteLine("ERROR: " + message + " (" + sourceFile + ":" + std::to_string(line) + ")");
  } catch (...) {
    // No memory for the whole line: the message alone is better than nothing.
    tesk_log::WriteLine(message);
  }
}
