#include "reference_suite/audio/decode/header_claims.h"

#include <algorithm>
#include <string_view>

namespace tesk_audio {

namespace {

constexpr std::string_view kW64Riff("riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\x00\x00", 16);
// The largest signed number of as many bits, and above it.
constexpr unsigned long long kNoPromise32 = 0x7FFFFFFFULL;
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

// 0 for what promises nothing.
unsigned long long Promised(unsigned long long size, unsigned long long noPromise,
                            unsigned long long before = 0) {
  return size == 0 || size >= noPromise ? 0 : size + before;
}

bool HasRf64Sizes(const std::string& head) {
  return Begins(head, "RF64") && head.size() >= kClaimBytes && head.compare(12, 4, "ds64") == 0;
}

// The size of the whole file, or a lower bound of it; 0 when the header promises none.
unsigned long long PromisedFileBytes(const std::string& head) {
  if (head.size() < 24) return 0;
  if (Begins(head, "RIFF") && ClaimedName(head) == "WAV")
    return Promised(Little(head, 4, 4), kNoPromise32, 8);
  if (HasRf64Sizes(head))
    return std::max(Promised(Little(head, 20, 8), kNoPromise64, 8), PromisedRf64Bytes(head));
  if (Begins(head, kW64Riff)) return Promised(Little(head, 16, 8), kNoPromise64);
  if (Begins(head, "FORM")) return Promised(Big(head, 4, 4), kNoPromise32, 8);
  if (Begins(head, ".snd")) return Promised(Big(head, 8, 4), kNoPromise32, Big(head, 4, 4));
  if (Begins(head, "dns.")) return Promised(Little(head, 8, 4), kNoPromise32, Little(head, 4, 4));
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

unsigned long long PromisedRf64Bytes(const std::string& head) {
  return HasRf64Sizes(head) ? Promised(Little(head, 28, 8), kNoPromise64) : 0;
}

}  // namespace tesk_audio
