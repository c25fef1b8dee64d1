#include "reference_suite/audio/decode/header_claims.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tesk_audio {

namespace {

constexpr std::string_view kW64Riff("riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\x00\x00", 16);
constexpr std::string_view kW64Data("data\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 16);
constexpr std::size_t kW64ChunkHeader = 24;  // counted in a chunk's size
// Round sizes that are written where the length is not known in advance: the largest that fits, signed or
// not, and what leaves room below that. A header's few bytes and whole frames move them a little.
constexpr std::array<unsigned long long, 3> kNoPromise32 = {0x7F000000ULL, 0x80000000ULL, 0x100000000ULL};
constexpr unsigned long long kAroundNoPromise32 = 0x10000ULL;
// The largest signed number, and above it.
constexpr unsigned long long kNoPromise64 = 0x7FFFFFFFFFFFFFFFULL;

bool Begins(const std::string& head, std::string_view with) {
  return head.starts_with(with);
}

unsigned long long Big(const std::string& head, std::size_t at, std::size_t bytes) {
  unsigned long long value = 0;
  for (std::size_t i = 0; i < bytes; ++i) value = value * 256 + static_cast<unsigned char>(head[at + i]);
  return value;
}

unsigned long long Little(const std::string& head, std::size_t at, std::size_t bytes) {
  unsigned long long value = 0;
  for (std::size_t i = bytes; i > 0; --i) value = value * 256 + static_cast<unsigned char>(head[at + i - 1]);
  return value;
}

// 0 for what promises nothing; `before` is what the size leaves out.
unsigned long long Promised32(unsigned long long size, unsigned long long before = 0) {
  const bool isNone = std::any_of(kNoPromise32.begin(), kNoPromise32.end(), [size](auto none) {
    return size >= none - kAroundNoPromise32 && size <= none + kAroundNoPromise32;
  });
  return size == 0 || isNone ? 0 : size + before;
}

unsigned long long Promised64(unsigned long long size, unsigned long long before = 0) {
  return size == 0 || size >= kNoPromise64 ? 0 : size + before;
}

bool HasRf64Sizes(const std::string& head) {
  return Begins(head, "RF64") && head.size() >= 36 && head.compare(12, 4, "ds64") == 0;
}

// Behind other chunks, each filled up to eight bytes.
unsigned long long PromisedW64SampleBytes(const std::string& head) {
  std::size_t at = 40;
  while (at + kW64ChunkHeader <= head.size()) {
    const unsigned long long size = Little(head, at + 16, 8);
    if (size < kW64ChunkHeader) return 0;
    if (head.compare(at, 16, kW64Data) == 0) return Promised64(size) == 0 ? 0 : size - kW64ChunkHeader;
    if (size > head.size()) return 0;
    at += (static_cast<std::size_t>(size) + 7) / 8 * 8;
  }
  return 0;
}

// The size of the whole file, or a lower bound of it; 0 when the header promises none.
unsigned long long PromisedFileBytes(const std::string& head) {
  if (head.size() < 24) return 0;
  if (Begins(head, "RIFF") && ClaimedName(head) == "WAV") return Promised32(Little(head, 4, 4), 8);
  if (HasRf64Sizes(head)) return std::max(Promised64(Little(head, 20, 8), 8), PromisedSampleBytes(head));
  if (Begins(head, kW64Riff)) return std::max(Promised64(Little(head, 16, 8)), PromisedSampleBytes(head));
  if (Begins(head, "FORM")) return Promised32(Big(head, 4, 4), 8);
  if (Begins(head, ".snd")) return Promised32(Big(head, 8, 4), Big(head, 4, 4));
  if (Begins(head, "dns.")) return Promised32(Little(head, 8, 4), Little(head, 4, 4));
  return 0;
}

}  // namespace

std::string ClaimedName(const std::string& head) {
  if (Begins(head, "OggS")) return "Ogg";
  if (Begins(head, "RIFF") && head.size() >= 12 && head.compare(8, 4, "WAVE") == 0) return "WAV";
  if (Begins(head, "RF64")) return "RF64";
  if (Begins(head, kW64Riff)) return "W64";
  if (Begins(head, "FORM")) return "AIFF";
  if (Begins(head, ".snd") || Begins(head, "dns.")) return "AU";
  if (Begins(head, "caff")) return "CAF";
  if (Begins(head, "fLaC")) return "FLAC";
  if (Begins(head, "ID3")) return "MP3";
  return "";
}

bool IsCutOff(const std::string& head, long long fileSize) {
  return PromisedFileBytes(head) > static_cast<unsigned long long>(fileSize);
}

unsigned long long PromisedSampleBytes(const std::string& head) {
  if (HasRf64Sizes(head)) return Promised64(Little(head, 28, 8));
  return Begins(head, kW64Riff) ? PromisedW64SampleBytes(head) : 0;
}

}  // namespace tesk_audio
