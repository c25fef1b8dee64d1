#pragma once

#include <string>

#include "host/session/live.h"

namespace orbel::host::terminal {

// Where the operator reads, on standard error: two lines that are written over on a terminal, the performance
// and below it the sound; elsewhere lines under each other. Shows nothing once the terminal has gone, and no
// status while earlier words find no room there. Threads    HOST.
class Display {
 public:
  explicit Display(bool onTerminal) : onTerminal_(onTerminal) {}

  void Message(const std::string& text);
  // Elsewhere than on a terminal only when song or state are not what they were.
  void Status(const StageStatus& status);
  // Nothing is written over any more.
  void End();

 private:
  void StatusOnTerminal_(const StageStatus& status);

  bool onTerminal_;
  std::string shown_;
};

}  // namespace orbel::host::terminal
