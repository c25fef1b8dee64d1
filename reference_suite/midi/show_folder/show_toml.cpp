#include "reference_suite/midi/show_folder/show_toml.h"

#include <array>
#include <string_view>

#include "reference_suite/midi/show_folder/read_song_log.h"
#include "reference_suite/midi/show_folder/table_reader.h"

namespace tesk_midi {

namespace {

const char kOrderCure[] = "; write order = [\"1\", \"2\"], for instance.";

std::vector<ShowToml::OrderEntry> ReadOrder(const TomlNode* order, FileProblems* problems) {
  std::vector<ShowToml::OrderEntry> entries;
  if (order == nullptr) return entries;
  if (order->kind != TomlKind::Array) {
    problems->Error(order->place, std::string("\"order\" must be a list of song numbers in quotes, but is ") +
                                      KindText(order->kind) + kOrderCure);
    return entries;
  }
  for (const TomlNode& number : order->elements) {
    if (number.kind == TomlKind::String) {
      entries.push_back({number.text, number.place});
    } else {
      problems->Error(number.place,
                      std::string("\"order\" must be a list of song numbers in quotes, but holds ") +
                          KindText(number.kind) + kOrderCure);
    }
  }
  return entries;
}

}  // namespace

ShowToml ReadShowToml(const std::string& text, FileProblems* problems) {
  static constexpr std::array<std::string_view, 3> kKeys{"format", "title", "order"};
  ShowToml show;
  TomlNode top;
  if (!ReadTomlText(text, problems, &top)) return show;
  TableReader table(top, "", problems);
  if (!table.HasKnownFormat()) return show;
  table.RefuseUnknownKeys(kKeys);
  show.title = ShownText(table.Text({"title", "\"An Evening Upstairs\""}).value_or(""));
  show.order = ReadOrder(table.Find("order"), problems);
  return show;
}

}  // namespace tesk_midi
