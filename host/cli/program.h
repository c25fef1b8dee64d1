#pragma once

#include <functional>
#include <string>

#include "host/session/live.h"

namespace orbel::host::cli {

// What the command line hands over to other parts of the program.
struct Faces {
  // Plays a show in the terminal until it ends or the performer quits. Returns the exit status.
  std::function<int(const PlayOptions&, PlayReport*)> play;
  // Writes the show on which bench measures into an empty folder.
  std::function<void(const std::string& folder)> writeBenchShow;
  // Writes the demo show into a folder; `progress` is told each file before it is made.
  std::function<void(const std::string& folder, const std::function<void(const std::string& file)>& progress)>
      writeDemo;
};

// Reads the command line and does what it says. Results go to standard output, messages to standard error.
// Returns the exit status; throws nothing.
int RunProgram(int argc, char** argv, const Faces& faces);

}  // namespace orbel::host::cli
