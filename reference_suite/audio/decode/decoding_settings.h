#pragma once

#include "reference_suite/audio/decode/decoding_places.h"

namespace tesk_audio {

// How files are decoded in several places at once.
struct DecodingSettings {
  // A file of twice that length is cut. Shorter segments would not be worth a thread and a decoder.
  double shortestSegmentSeconds = 8.0;
  // How many threads may decode at the same time.
  int cores = CoreCount();
};

// What every loader goes by. Alone in its object, so that a program can put its own in its place. Threads:
// any.
DecodingSettings GetDecodingSettings();

}  // namespace tesk_audio
