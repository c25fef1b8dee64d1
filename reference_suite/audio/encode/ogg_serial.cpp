#include "reference_suite/audio/encode/ogg_serial.h"

#include <ogg/ogg.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "reference_suite/audio/encode/part_file.h"
#include "reference_suite/audio/encode/sound_file_error.h"

namespace tesk_audio {
namespace {

constexpr unsigned char kSerial[] = {'o', 'r', 'b', 'l'};
constexpr std::size_t kSerialAt = 14;
constexpr std::size_t kHeader = 27;  // before the lengths of the segments
constexpr std::size_t kSegmentsAt = 26;
constexpr std::size_t kLongestPage = kHeader + 255 + 255 * 255;

// The page at the start of `bytes`; empty when there is none.
ogg_page FindPage(std::vector<unsigned char>& bytes) {
  ogg_page page{};
  if (bytes.size() < kHeader || !std::equal(bytes.begin(), bytes.begin() + 4, "OggS")) return page;
  const std::size_t segments = bytes[kSegmentsAt];
  if (bytes.size() < kHeader + segments) return page;
  long body = 0;
  for (std::size_t index = 0; index < segments; ++index) body += bytes[kHeader + index];
  if (bytes.size() < kHeader + segments + static_cast<std::size_t>(body)) return page;
  page.header = bytes.data();
  page.header_len = static_cast<long>(kHeader + segments);
  page.body = bytes.data() + page.header_len;
  page.body_len = body;
  return page;
}

}  // namespace

void FixOggSerial(PartFile& file) {
  const long long length = file.GetLength();
  for (long long at = 0; at < length;) {
    std::vector<unsigned char> bytes(
        static_cast<std::size_t>(std::min<long long>(length - at, static_cast<long long>(kLongestPage))));
    file.Seek(at, SEEK_SET);
    file.Read(bytes.data(), static_cast<long long>(bytes.size()));
    ogg_page page = FindPage(bytes);
    if (page.header == nullptr) throw SoundFileError("The encoder wrote something that is no Ogg page.");
    std::copy(std::begin(kSerial), std::end(kSerial), page.header + kSerialAt);
    ogg_page_checksum_set(&page);
    file.Seek(at, SEEK_SET);
    file.Write(page.header, page.header_len);
    at += page.header_len + page.body_len;
  }
  file.Check();
}

}  // namespace tesk_audio
