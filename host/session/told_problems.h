#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "suite/midi/load_show.h"

namespace orbel::host {

// How many problems of a show are told one by one at a time.
inline constexpr std::size_t kMostProblemsTold = 20;

// What is told, one line each, of what was found wrong with the show at `showPath`, so that who is about to
// play can read it: of errors and of warnings as many as that, in their order, and of the rest their number
// and where to read on. Paths and names are as they are, not fit for a terminal yet. Threads: ANY.
std::vector<std::string> TellProblems(std::span<const tesk_midi::Problem> problems,
                                      const std::string& showPath);

}  // namespace orbel::host
