#pragma once

#include <functional>
#include <string>
#include <vector>

#include "suite/midi/load_show.h"

namespace orbel::host {

// Everything about a show that would fail or surprise on stage, errors first, each with its file and a cure.
// Decodes every audio file; `progress` is told the file before that and may be empty. Throws Failure when
// there is no such folder.
std::vector<tesk_midi::Problem> CheckShow(const std::string& showPath,
                                          const std::function<void(const std::string& file)>& progress);

}  // namespace orbel::host
