#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tesk_midi {

// How many letters must be put in, taken out or replaced to make one word of the other.
std::size_t EditDistance(std::string_view a, std::string_view b);

// The candidate that was probably meant by `word`; empty when none is near: no more letters wrong than two,
// and than half of those of the word. The first of several that are equally near.
std::string_view NearestWord(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace tesk_midi
