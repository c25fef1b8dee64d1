#include <algorithm>

#include "reference_suite/midi/show_folder/nearest_word.h"
#include "reference_suite/midi/show_folder/table_reader.h"

namespace tesk_midi {

namespace {

using Words = std::span<const std::string_view>;

bool Contains(Words words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// "\"from\", \"to\" and \"exit\""
std::string List(Words words) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i != 0) list += i + 1 == words.size() ? " and " : ", ";
    list += Quoted(words[i]);
  }
  return list;
}

bool IsTableLike(const TomlNode& value) {
  if (value.kind == TomlKind::Table) return true;
  return value.kind == TomlKind::Array && !value.elements.empty() &&
         value.elements.front().kind == TomlKind::Table;
}

std::string WhatWasMeant(std::string_view key, Words known, Words above) {
  if (Contains(above, key)) return "it belongs above the first table of the file.";
  const std::string_view nearest = NearestWord(key, known);
  if (!nearest.empty()) return "did you mean " + Quoted(nearest) + "?";
  return "known here " + std::string(known.size() == 1 ? "is only " : "are ") + List(known) + ".";
}

}  // namespace

void TableReader::RefuseUnknownKeys(Words known, Words above) {
  for (const TomlEntry& entry : table_.entries) {
    if (Contains(known, entry.key)) continue;
    const std::string kind = IsTableLike(entry.value) ? "table " : "key ";
    problems_->Error(entry.place, "unknown " + kind + Quoted(entry.key) + In_() + "; " +
                                      WhatWasMeant(entry.key, known, above));
  }
}

}  // namespace tesk_midi
