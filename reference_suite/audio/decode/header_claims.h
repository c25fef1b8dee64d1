#pragma once

#include <string>

namespace tesk_audio {

// What the first bytes of a file say about it, where the decoding library keeps quiet: of a file that is cut
// off it counts the frames that are there. `head` is the beginning of the file, kClaimBytes of it or all.
inline constexpr std::size_t kClaimBytes = 40;

// What the file claims to be; empty when it claims nothing.
std::string ClaimedName(const std::string& head);

// Whether the header promises more bytes than the file has: WAV, RF64, W64, AIFF, AU. Recorders that could
// not go back to their header leave the largest sizes (or 0) there, which promise nothing.
bool IsCutOff(const std::string& head, long long fileSize);

// How many bytes of samples an RF64 header promises; 0 for any other file, and where it promises nothing.
unsigned long long PromisedRf64Bytes(const std::string& head);

}  // namespace tesk_audio
