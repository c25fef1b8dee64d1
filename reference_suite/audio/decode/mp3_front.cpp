#include "reference_suite/audio/decode/mp3_front.h"

#include <string_view>

namespace tesk_audio {

namespace {

// Where the two numbers of 12 bits stand in what the encoder says: how many frames of audio it added in front
// of the music and behind it. The library leaves out 529 more in front, which decoding adds, and so many
// less behind.
constexpr std::size_t kEncoderBytes = 36;
constexpr std::size_t kAddedAt = 21;
constexpr unsigned kAddedByDecoding = 529;
// Of silence that the library leaves out where the file says nothing: whole frames of every kind, and so many
// that the library comes back to where it begins to sum up samples, which decides about their last bit.
constexpr unsigned kSilence = 4608;

void SetAdded(std::string* encoder, unsigned before, unsigned behind) {
  (*encoder)[kAddedAt] = static_cast<char>(before >> 4 & 0xFF);
  (*encoder)[kAddedAt + 1] = static_cast<char>((before << 4 | behind >> 8) & 0xFF);
  (*encoder)[kAddedAt + 2] = static_cast<char>(behind & 0xFF);
}

void SetNothingAddedBehind(std::string* encoder) {
  (*encoder)[kAddedAt + 1] = static_cast<char>((*encoder)[kAddedAt + 1] & 0xF0);
  (*encoder)[kAddedAt + 2] = 0;
}

std::string Number(long long value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

// A frame of the file's format in which `content` stands behind a header and zeros, which are silence.
std::string FrameWith(const Mp3Scan& scan, const std::string& content) {
  auto header = scan.header;
  header[1] |= 1;  // no sum
  for (unsigned bitRate = 1; bitRate < 15; ++bitRate) {
    header[2] = static_cast<unsigned char>((header[2] & 0x0C) | bitRate << 4);
    const MpegHeader read = *ReadMpegHeader(header.data());
    if (read.bytes < MpegHeader::kBytes + read.sideBytes + content.size()) continue;
    std::string frame(header.begin(), header.end());
    frame += std::string(read.sideBytes, '\0') + content;
    frame.resize(read.bytes, '\0');
    return frame;
  }
  return "";
}

std::string InfoFrame(const Mp3Scan& scan, long long frames, const std::string& encoder) {
  return FrameWith(scan, "Info" + Number(1) + Number(frames) + encoder);
}

}  // namespace

std::string Mp3Front(const Mp3Scan& scan) {
  std::string encoder = scan.encoder;
  if (scan.isTagged && !scan.isVbri) {
    // What the first of several MP3s has behind it is not the end.
    if (scan.tagsInside > 0 && !encoder.empty()) SetNothingAddedBehind(&encoder);
    return InfoFrame(scan, scan.frames, encoder);
  }
  encoder.assign(kEncoderBytes, '\0');
  encoder.replace(0, 4, "none");
  SetAdded(&encoder, kSilence - kAddedByDecoding, kAddedByDecoding);
  const long long silent = kSilence / scan.format->Samples();
  std::string front = InfoFrame(scan, scan.frames + silent, encoder);
  for (long long frame = 0; frame < silent; ++frame) front += FrameWith(scan, "");
  return front;
}

}  // namespace tesk_audio
