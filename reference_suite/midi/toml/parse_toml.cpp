#include "reference_suite/midi/toml/parse_toml.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "reference_suite/midi/toml/toml_library.h"

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

bool BreaksTheLibrary(std::string_view text) {
  try {
    static_cast<void>(toml::parse(text));
  } catch (const TomlLibraryBroken&) {
    return true;
  } catch (const toml::parse_error&) {
    return false;
  }
  return false;
}

// Where a text breaks the library: it reads from front to back, so that is where the shortest beginning ends
// that does so.
TextPlace FindBreak(std::string_view text) {
  std::size_t sound = 0;
  std::size_t broken = text.size();
  while (broken - sound > 1) {
    const std::size_t middle = sound + (broken - sound) / 2;
    (BreaksTheLibrary(text.substr(0, middle)) ? broken : sound) = middle;
  }
  const auto lines = std::count(text.begin(), text.begin() + sound, '\n');
  const std::string_view line = text.substr(0, broken).substr(text.substr(0, sound).rfind('\n') + 1);
  const auto characters = std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; });
  return {static_cast<int>(lines + 1), static_cast<int>(characters)};
}

}  // namespace

TomlNode ParseToml(std::string_view text) {
  try {
    return Copy(toml::parse(text));
  } catch (const toml::parse_error& error) {
    throw TomlSyntaxError(PlaceOf(error.source().begin), std::string(error.description()));
  } catch (const TomlLibraryBroken&) {
    throw TomlSyntaxError(FindBreak(text), "unexpected character");
  }
}

}  // namespace tesk_midi
