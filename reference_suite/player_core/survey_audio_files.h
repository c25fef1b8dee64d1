#pragma once

#include <string>
#include <vector>

#include "suite/midi/load_show.h"

namespace player_core {

// Looks at the audio file of every song of `show` in the folder "data": opens it, reads its header and its
// end. Songs whose audio cannot be decoded are left out of `show`, songs that have none are marked. Returns
// what a person should know: an error for each song that is left out, and warnings. Throws exc::ListdirError
// when there is no folder to look at.
std::vector<tesk_midi::Problem> SurveyAudioFiles(const std::string& showPath, tesk_midi::ShowData& show);

}  // namespace player_core
