#include "reference_suite/audio/encode/peak_time.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include "reference_suite/audio/encode/part_file.h"

namespace tesk_audio {
namespace {

constexpr long long kFirstChunkAt = 12;  // after "RIFF", the length and "WAVE"
constexpr long long kChunkHeader = 8;    // name and length
constexpr long long kTimeInBody = 4;     // after the version

bool IsNamed(const std::array<unsigned char, kChunkHeader>& header, const char* name) {
  return std::equal(header.begin(), header.begin() + 4, name);
}

long long LengthOf(const std::array<unsigned char, kChunkHeader>& header) {
  return header[4] | header[5] << 8 | header[6] << 16 | static_cast<long long>(header[7]) << 24;
}

}  // namespace

void ClearPeakTime(PartFile& file) {
  std::array<unsigned char, kChunkHeader> header{};
  for (long long at = kFirstChunkAt; at + kChunkHeader <= file.GetLength();) {
    file.Seek(at, SEEK_SET);
    if (file.Read(header.data(), kChunkHeader) != kChunkHeader || IsNamed(header, "data")) break;
    if (IsNamed(header, "PEAK")) {
      const std::array<unsigned char, 4> noTime{};
      file.Seek(at + kChunkHeader + kTimeInBody, SEEK_SET);
      file.Write(noTime.data(), static_cast<long long>(noTime.size()));
      break;
    }
    const long long length = LengthOf(header);
    at += kChunkHeader + length + length % 2;  // chunks begin at even offsets
  }
  file.Check();
}

}  // namespace tesk_audio
