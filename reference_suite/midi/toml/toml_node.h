#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tesk_midi {

// A place in a text file: line and column from 1, the column in characters. 0: unknown.
struct TextPlace {
  int line = 0;
  int column = 0;
};

enum class TomlKind { Boolean, Integer, Float, String, DateTime, Array, Table };

struct TomlEntry;

// One value of a TOML file as plain data: which of the fields holds it follows from its kind.
struct TomlNode {
  TomlKind kind = TomlKind::Table;
  TextPlace place;
  bool boolean = false;
  std::int64_t integer = 0;
  double number = 0.0;
  std::string text;
  std::vector<TomlNode> elements;  // of an array
  std::vector<TomlEntry> entries;  // of a table, in the order in which they are written
};

struct TomlEntry {
  std::string key;
  TextPlace place;  // of the key
  TomlNode value;
};

}  // namespace tesk_midi
