#pragma once

#include <string>
#include <vector>

namespace orbel::host {

// The engine and the audio library write lines ("WARNING: ...") on std::cout, and errors into the log. To
// whoever reads the program's results they are messages, so they go to standard error, or to whoever holds
// them; standard output belongs to the results alone. What is said of a recording is put into the words of
// the check (recording_lines.h).
//
// Threads    any thread writes lines; everything declared here is HOST.
// Locks      one of its own, innermost.

// From here on std::cout is the console, and the log is as well. Call it before any other thread writes
// there.
void SeparateConsoleFromResults();

// While it lives, lines are kept instead of written. One at a time.
class HeldConsoleLines {
 public:
  HeldConsoleLines();
  // Writes what nobody took.
  ~HeldConsoleLines();
  HeldConsoleLines(const HeldConsoleLines&) = delete;
  HeldConsoleLines& operator=(const HeldConsoleLines&) = delete;

  // The lines since the last call, oldest first, without their ends.
  std::vector<std::string> Take();
};

}  // namespace orbel::host
