#pragma once

#include <cstddef>
#include <optional>

namespace tesk_audio {

// The four bytes that each frame of MPEG audio begins with: layer III of MPEG 1, 2 and 2.5, of any bit rate
// that the header names (of others, the free ones, it does not tell how long the frame is).
struct MpegHeader {
  static constexpr std::size_t kBytes = 4;
  static constexpr std::size_t kMostFrameBytes = 1441;

  unsigned version = 0;  // as it stands there: 3 is MPEG 1, 2 is MPEG 2, 0 is MPEG 2.5
  int rateHz = 0;
  unsigned channels = 0;
  std::size_t bytes = 0;      // of the whole frame
  std::size_t sideBytes = 0;  // behind the header, and behind its sum where it has one
  bool hasSum = false;        // of 16 bits, behind the header

  // How many frames of audio it holds.
  long long Samples() const { return version == 3 ? 1152 : 576; }
  bool SameFormat(const MpegHeader& other) const {
    return version == other.version && rateHz == other.rateHz && channels == other.channels;
  }
};

// Nothing where these bytes are no such header.
std::optional<MpegHeader> ReadMpegHeader(const unsigned char* bytes);

}  // namespace tesk_audio
