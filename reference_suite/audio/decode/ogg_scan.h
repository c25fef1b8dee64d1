#pragma once

#include "reference_suite/audio/decode/audio_file.h"

namespace tesk_audio {

// What the pages of an Ogg file tell about its health. The decoding libraries pass over lost pages, over a
// lost end and (all but one) over a second stream without a word.
struct OggScan {
  bool chained = false;     // another stream begins after the first one's audio
  bool lostStart = false;   // bytes between the headers and the first page of audio are no pages
  bool lostInside = false;  // a page is missing, or broken, further on
  bool lostEnd = false;     // the last page does not end its stream
};

// Reads the whole file once, page by page, checking every page's sum. Leaves the position anywhere.
OggScan ScanOgg(AudioFile& file);

}  // namespace tesk_audio
