#pragma once

#include <string>
#include <vector>

namespace fakes {

// One report of an exception that could not be passed on.
struct LogEntry {
  std::string message;
  std::string sourceFile;
  int line = 0;
  bool operator==(const LogEntry&) const = default;
};

// What TeskLogException has been told since the last call, in order. Threads: ANY.
std::vector<LogEntry> TakeLogEntries();

// From now on reporting itself throws a std::bad_alloc, as it would without memory.
void FailLogging(bool fail);

}  // namespace fakes
