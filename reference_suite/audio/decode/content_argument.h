#pragma once

#include <string>

namespace tesk_audio {

// What the decoder's second argument asks for; 0 for what it leaves to the file.
struct WantedFormat {
  double rateHz = 0.0;    // frames per second, to which a file of another rate is resampled
  unsigned channels = 0;  // a file that has others is refused
};

// "rate=R" with R from 1000 to 768000 frames per second, or "rate=R,channels=N" with N from 1 to 1024; all is
// left to the file when it is empty. Throws AudioSampleContentError for any other text.
WantedFormat FormatOfContentArgument(const std::string& shownPath, const std::string& argument);

}  // namespace tesk_audio
