#pragma once

#include <string>

namespace tesk_audio {

// The rate that the decoder's second argument asks for: "rate=R" with R from 1000 to 768000 frames per
// second; 0, keep the file's own, when it is empty. Throws AudioSampleContentError for any other text.
double RateOfContentArgument(const std::string& shownPath, const std::string& argument);

}  // namespace tesk_audio
