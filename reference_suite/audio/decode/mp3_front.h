#pragma once

#include <string>

#include "reference_suite/audio/decode/mp3_scan.h"

namespace tesk_audio {

// What to put before the first frame with music, in the place of all that stands there, so that the decoding
// library plays `scan.frames` from there on: a frame that tells their number, with what the file's own says
// of the silence that its encoder added. Where the file says nothing of that, every frame is played whole.
std::string Mp3Front(const Mp3Scan& scan);

}  // namespace tesk_audio
