#include "reference_suite/midi/toml/parse_toml.h"

#include <algorithm>
#include <tuple>
#include <utility>

// The library comes as headers that cost seconds to compile: nothing else includes them.
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

namespace tesk_midi {

namespace {

TextPlace PlaceOf(const toml::source_position& position) {
  return {static_cast<int>(position.line), static_cast<int>(position.column)};
}

TomlNode Copy(const toml::node& node);

bool WrittenBefore(const TomlEntry& a, const TomlEntry& b) {
  return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
}

std::vector<TomlEntry> CopyEntries(const toml::table& table) {
  std::vector<TomlEntry> entries;
  for (const auto& [key, value] : table) {
    entries.push_back({std::string(key.str()), PlaceOf(key.source().begin), Copy(value)});
  }
  // The library sorts by key; people read from top to bottom. Stable: the keys of "a.b.c" may share a place.
  std::stable_sort(entries.begin(), entries.end(), WrittenBefore);
  return entries;
}

TomlNode Copy(const toml::node& node) {
  TomlNode copy;
  copy.place = PlaceOf(node.source().begin);
  if (const toml::table* table = node.as_table()) {
    copy.entries = CopyEntries(*table);
  } else if (const toml::array* array = node.as_array()) {
    copy.kind = TomlKind::Array;
    for (const toml::node& element : *array) copy.elements.push_back(Copy(element));
  } else if (const auto* text = node.as_string()) {
    copy.kind = TomlKind::String;
    copy.text = text->get();
  } else if (const auto* integer = node.as_integer()) {
    copy.kind = TomlKind::Integer;
    copy.integer = integer->get();
  } else if (const auto* number = node.as_floating_point()) {
    copy.kind = TomlKind::Float;
    copy.number = number->get();
  } else if (const auto* boolean = node.as_boolean()) {
    copy.kind = TomlKind::Boolean;
    copy.boolean = boolean->get();
  } else {
    copy.kind = TomlKind::DateTime;
  }
  return copy;
}

}  // namespace

TomlNode ParseToml(std::string_view text) {
  try {
    return Copy(toml::parse(text));
  } catch (const toml::parse_error& error) {
    throw TomlSyntaxError(PlaceOf(error.source().begin), std::string(error.description()));
  }
}

}  // namespace tesk_midi
