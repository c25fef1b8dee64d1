#pragma once

#include <string>
#include <vector>

#include "reference_suite/midi/show_folder/file_problems.h"
#include "reference_suite/midi/toml/toml_node.h"

namespace tesk_midi {

// What show.toml says. Without the file, or where it says nothing, the fields are empty.
struct ShowToml {
  struct OrderEntry {
    std::string number;
    TextPlace place;
  };
  std::string title;
  std::vector<OrderEntry> order;
};

inline constexpr char kShowTomlName[] = "show.toml";

// Reads the text of show.toml. What is wrong is added to `problems` and is missing in the result.
ShowToml ReadShowToml(const std::string& text, FileProblems* problems);

// The running order of the songs `numbers`, which are sorted: as it is written, and those that are not
// written after it. Unknown and repeated numbers are added to `problems` and left out.
std::vector<std::string> MakeRunningOrder(const std::vector<std::string>& numbers,
                                          const std::vector<ShowToml::OrderEntry>& written,
                                          FileProblems* problems);

}  // namespace tesk_midi
