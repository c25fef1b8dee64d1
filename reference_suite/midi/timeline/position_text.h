#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "suite/midi/timeline.h"

namespace tesk_midi {

// A position as it is written, before a song says whether it exists.
struct WrittenPlace {
  enum class Kind { Bar, Tick, End };
  Kind kind = Kind::End;
  std::uint64_t bar = 0;
  std::uint64_t beat = 1;   // from 1
  std::uint64_t ticks = 0;  // past the beat; of Kind::Tick: from the start of the song
};

// "17", "17.3", "17.3.120", "end", "tick:30720": digits and nothing else, at most 18 of them in a number.
// Empty for any other text.
std::optional<WrittenPlace> ReadPositionText(std::string_view text);

// The tick of a place. Throws PositionError, whose text says what is wrong and what there is.
unsigned ResolvePlace(const TL::Timeline& timeline, const WrittenPlace& place);

// "17.3.120", always with all three parts.
std::string PlaceText(const TL::Timeline& timeline, unsigned tick);

}  // namespace tesk_midi
