#include "reference_suite/midi/show_folder/nearest_word.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace tesk_midi {

std::size_t EditDistance(std::string_view a, std::string_view b) {
  // row[j]: the distance of the letters of `a` so far to the first j letters of `b`.
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

std::string_view NearestWord(std::string_view word, std::span<const std::string_view> candidates) {
  // Longer words are nobody's slip of the finger, and would cost time.
  constexpr std::size_t kLongestWord = 64;
  if (word.size() > kLongestWord) return {};
  std::size_t allowed = std::min<std::size_t>(2, word.size() / 2);
  std::string_view nearest;
  for (const std::string_view candidate : candidates) {
    const std::size_t distance = EditDistance(word, candidate);
    if (distance > allowed || (distance == allowed && !nearest.empty())) continue;
    nearest = candidate;
    allowed = distance;
  }
  return nearest;
}

}  // namespace tesk_midi
