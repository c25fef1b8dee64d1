#pragma once

#include <cstddef>
#include <cstdint>

namespace tesk_midi {

// What bounds the time and memory that one file can cost. Songs of a show stay far below each.
inline constexpr std::size_t kMaxSmfBytes = std::size_t{16} * 1024 * 1024;
inline constexpr std::size_t kMaxSmfEvents = 1'000'000;  // of every kind, over all tracks
inline constexpr std::size_t kMaxSmfTracks = 256;
inline constexpr std::size_t kMaxSmfMarkers = 65'536;          // each is a string of its own
inline constexpr std::size_t kMaxSmfWarnings = 50;             // what goes beyond is counted in one last line
inline constexpr std::uint32_t kMaxSmfQuantity = 0x0FFF'FFFF;  // a variable-length quantity of four bytes

}  // namespace tesk_midi
