#pragma once

#include <string>

namespace tesk_audio {

// What the first bytes of a file say about it, where the decoding library keeps quiet: of a file that is cut
// off it counts the frames that are there. `head` is the beginning of the file, kClaimBytes of it or all:
// enough for what stands before the samples where a recorder writes no pictures and no long texts there.
inline constexpr std::size_t kClaimBytes = 1024;

// What the file claims to be; empty when it claims nothing.
std::string ClaimedName(const std::string& head);

// Whether the header promises more bytes than the file has: WAV, RF64, W64, AIFF, AU. Recorders that could
// not go back to their header leave 0 or a round size there, which promise nothing: of 64 bits the largest,
// of 32 bits one within 64 KiB of 0x7F000000, of 2 GiB or of 4 GiB.
bool IsCutOff(const std::string& head, long long fileSize);

// How many bytes of samples the header of an RF64 or W64 file promises; 0 for any other file, and where it
// promises nothing.
unsigned long long PromisedSampleBytes(const std::string& head);

}  // namespace tesk_audio
