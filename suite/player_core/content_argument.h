#pragma once

#include <string>

// What players made from now on tell the decoder besides a file's path: "rate=R" when the output device runs
// at a rate of its own, "rate=R,channels=N" when it does and takes no other channels either, empty when it
// takes any. Process-wide; set before the first show is opened.
namespace player_core {

void SetContentArgument(const std::string& argument);
std::string GetContentArgument();

}  // namespace player_core
