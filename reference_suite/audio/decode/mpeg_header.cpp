#include "reference_suite/audio/decode/mpeg_header.h"

#include <array>

namespace tesk_audio {

namespace {

constexpr unsigned kLayer3 = 1;
constexpr unsigned kNoVersion = 1;
constexpr unsigned kMpeg1 = 3;
constexpr unsigned kMono = 3;
// In kbit/s; 0 where the header does not tell it, or cannot be one.
constexpr std::array<unsigned, 16> kBitRates1 = {0,   32,  40,  48,  56,  64,  80,  96,
                                                 112, 128, 160, 192, 224, 256, 320, 0};
constexpr std::array<unsigned, 16> kBitRates2 = {0,  8,  16, 24,  32,  40,  48,  56,
                                                 64, 80, 96, 112, 128, 144, 160, 0};
constexpr std::array<int, 4> kRatesHz = {44'100, 48'000, 32'000, 0};  // of MPEG 1

int RateHz(unsigned version, unsigned index) {
  if (version == kMpeg1) return kRatesHz.at(index);
  return version == 2 ? kRatesHz.at(index) / 2 : kRatesHz.at(index) / 4;
}

}  // namespace

std::optional<MpegHeader> ReadMpegHeader(const unsigned char* bytes) {
  if (bytes[0] != 0xFF || (bytes[1] & 0xE0) != 0xE0) return std::nullopt;
  MpegHeader header;
  header.version = bytes[1] >> 3 & 3;
  const bool isMpeg1 = header.version == kMpeg1;
  const unsigned bitRate = (isMpeg1 ? kBitRates1 : kBitRates2).at(bytes[2] >> 4);
  header.rateHz = RateHz(header.version, bytes[2] >> 2 & 3);
  const bool isLayer3 = (bytes[1] >> 1 & 3) == kLayer3;
  if (header.version == kNoVersion || !isLayer3 || bitRate == 0 || header.rateHz == 0) return std::nullopt;
  const bool isMono = bytes[3] >> 6 == kMono;
  header.channels = isMono ? 1 : 2;
  header.hasSum = (bytes[1] & 1) == 0;
  header.sideBytes = isMpeg1 ? (isMono ? 17 : 32) : (isMono ? 9 : 17);
  const unsigned padding = bytes[2] >> 1 & 1;
  header.bytes = (isMpeg1 ? 144'000 : 72'000) * bitRate / static_cast<unsigned>(header.rateHz) + padding;
  return header;
}

}  // namespace tesk_audio
