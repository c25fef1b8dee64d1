#pragma once

#include <array>
#include <optional>
#include <string>

#include "reference_suite/audio/decode/audio_file.h"
#include "reference_suite/audio/decode/mpeg_header.h"

namespace tesk_audio {

// What the frames of an MP3 tell. The decoding library counts on the length that stands in a first frame
// without music, or on a bit rate that stays, and keeps quiet about what comes behind that length.
struct Mp3Scan {
  // The first frame with music; nothing where there is none.
  std::optional<MpegHeader> format;
  std::array<unsigned char, MpegHeader::kBytes> header{};  // of that frame
  long long start = 0;                                     // of that frame, in bytes
  // MPEG frames from there on that are whole, those of `tagsInside` too: the library plays them as silence.
  long long frames = 0;
  long long tagsInside = 0;  // frames without music further on: another MP3 begins there
  bool hasGaps = false;      // between the frames there is something else

  // The frame without music before the first one.
  bool isTagged = false;
  bool isVbri = false;         // of a kind that the library plays as silence
  long long taggedFrames = 0;  // what it says; 0 for nothing
  std::string encoder;  // what it says of its encoder and of the silence that this one added; may be ""

  // What the music goes over to; it was looked at up to there.
  std::optional<MpegHeader> change;
};

// Reads the whole file once, from header to header, as far as it can be read and nobody wants decoding to
// stop. Leaves the position anywhere.
Mp3Scan ScanMp3(AudioFile& file);

}  // namespace tesk_audio
