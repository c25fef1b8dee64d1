#pragma once

#include <array>
#include <span>
#include <string_view>

#include "reference_suite/midi/show_folder/written_song_log.h"

namespace tesk_midi {

// What a table of a song's file is called and which keys it may have. The keys of its position come first:
// "from" and "to" for a range, otherwise "at".
struct CueShape {
  CueKind kind;
  std::string_view word;
  bool isRange;
  std::span<const std::string_view> keys;
};

inline constexpr std::array<std::string_view, 2> kTempoKeys{"at", "scale"};
inline constexpr std::array<std::string_view, 2> kTransposeKeys{"at", "semitones"};
inline constexpr std::array<std::string_view, 3> kVampKeys{"from", "to", "exit"};
inline constexpr std::array<std::string_view, 2> kRangeKeys{"from", "to"};
inline constexpr std::array<std::string_view, 3> kRepeatKeys{"from", "to", "passes"};
inline constexpr std::array<std::string_view, 1> kCaesuraKeys{"at"};
inline constexpr std::array<std::string_view, 2> kMarkerKeys{"at", "name"};
inline constexpr std::array<std::string_view, 2> kPageKeys{"at", "number"};

// In the order of CueKind.
inline constexpr std::array<CueShape, 10> kCueShapes{{
    {CueKind::Tempo, "tempo", false, kTempoKeys},
    {CueKind::Transpose, "transpose", false, kTransposeKeys},
    {CueKind::Vamp, "vamp", true, kVampKeys},
    {CueKind::Safety, "safety", true, kRangeKeys},
    {CueKind::Repeat, "repeat", true, kRepeatKeys},
    {CueKind::Cut, "cut", true, kRangeKeys},
    {CueKind::Caesura, "caesura", false, kCaesuraKeys},
    {CueKind::Marker, "marker", false, kMarkerKeys},
    {CueKind::Click, "click", true, kRangeKeys},
    {CueKind::Page, "page", false, kPageKeys},
}};

// The keys at the top of a song's file that are not tables.
inline constexpr std::array<std::string_view, 6> kSongKeys{"format",    "skip",        "attacca",
                                                           "first_bar", "audio_start", "audio_end"};

}  // namespace tesk_midi
