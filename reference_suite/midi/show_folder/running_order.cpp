#include <algorithm>
#include <map>
#include <string_view>

#include "reference_suite/midi/show_folder/nearest_word.h"
#include "reference_suite/midi/show_folder/show_toml.h"
#include "reference_suite/midi/show_folder/song_files.h"

namespace tesk_midi {

namespace {

// The song that was probably meant: the same number written differently, or one that is spelt nearly alike.
std::string_view MeantNumber(const std::string& number, const std::vector<std::string>& numbers) {
  for (const std::string& known : numbers) {
    if (NumberByValue(known) == NumberByValue(number)) return known;
  }
  const std::vector<std::string_view> candidates(numbers.begin(), numbers.end());
  return NearestWord(number, candidates);
}

}  // namespace

std::vector<std::string> MakeRunningOrder(const std::vector<std::string>& numbers,
                                          const std::vector<ShowToml::OrderEntry>& written,
                                          FileProblems* problems) {
  std::vector<std::string> order;
  std::map<std::string, int> lines;  // where each number was written first
  for (const ShowToml::OrderEntry& entry : written) {
    const bool known = std::find(numbers.begin(), numbers.end(), entry.number) != numbers.end();
    const auto [place, isNew] = lines.emplace(entry.number, entry.place.line);
    if (!isNew) {
      problems->Error(entry.place, "song " + Quoted(entry.number) + " is in \"order\" already, in line " +
                                       std::to_string(place->second) + "; keep it once.");
    } else if (!known) {
      const std::string_view meant = MeantNumber(entry.number, numbers);
      problems->Error(entry.place, "there is no song " + Quoted(entry.number) + " in songs/; " +
                                       (meant.empty() ? "take it out of \"order\"."
                                                      : "did you mean " + Quoted(meant) + "?"));
    } else {
      order.push_back(entry.number);
    }
  }
  for (const std::string& number : numbers) {
    if (lines.count(number) == 0) order.push_back(number);
  }
  return order;
}

}  // namespace tesk_midi
