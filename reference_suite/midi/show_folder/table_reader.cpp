#include "reference_suite/midi/show_folder/table_reader.h"

#include <algorithm>
#include <charconv>

namespace tesk_midi {

namespace {

// The shortest text that reads back as `number`, whatever the locale.
std::string NumberText(double number) {
  char text[32];
  const std::to_chars_result result = std::to_chars(std::begin(text), std::end(text), number);
  return std::string(std::begin(text), result.ptr);
}

}  // namespace

const char* KindText(TomlKind kind) {
  switch (kind) {
    case TomlKind::Boolean:
      return "true or false";
    case TomlKind::Integer:
      return "a whole number";
    case TomlKind::Float:
      return "a number with a point";
    case TomlKind::String:
      return "a text";
    case TomlKind::DateTime:
      return "a date or a time";
    case TomlKind::Array:
      return "a list";
    default:
      return "a table";
  }
}

const TomlNode* TableReader::Find(std::string_view key) const {
  const auto found = std::find_if(table_.entries.begin(), table_.entries.end(),
                                  [key](const TomlEntry& entry) { return entry.key == key; });
  return found == table_.entries.end() ? nullptr : &found->value;
}

bool TableReader::Require(KeyUse use) {
  if (Find(use.key) != nullptr) return true;
  problems_->Error(table_.place, Quoted(use.key) + " is missing" + In_() + "; write " + std::string(use.key) +
                                     " = " + std::string(use.example) + ", for instance.");
  return false;
}

void TableReader::WrongKind_(const TomlNode& value, KeyUse use, const char* wanted) {
  problems_->Error(value.place, Quoted(use.key) + " must be " + wanted + ", but is " + KindText(value.kind) +
                                    "; write " + std::string(use.key) + " = " + std::string(use.example) +
                                    ", for instance.");
}

void TableReader::OutOfRange_(const TomlNode& value, KeyUse use, const std::string& least,
                              const std::string& most, const std::string& found) {
  problems_->Error(value.place, Quoted(use.key) + " must lie between " + least + " and " + most +
                                    ", but is " + found + ".");
}

std::optional<bool> TableReader::Boolean(KeyUse use) {
  const TomlNode* value = Find(use.key);
  if (value == nullptr) return std::nullopt;
  if (value->kind == TomlKind::Boolean) return value->boolean;
  WrongKind_(*value, use, "true or false");
  return std::nullopt;
}

std::optional<std::int64_t> TableReader::Integer(KeyUse use, std::int64_t least, std::int64_t most) {
  const TomlNode* value = Find(use.key);
  if (value == nullptr) return std::nullopt;
  if (value->kind != TomlKind::Integer) {
    WrongKind_(*value, use, "a whole number");
    return std::nullopt;
  }
  if (value->integer >= least && value->integer <= most) return value->integer;
  OutOfRange_(*value, use, std::to_string(least), std::to_string(most), std::to_string(value->integer));
  return std::nullopt;
}

std::optional<double> TableReader::Number(KeyUse use, double least, double most) {
  const TomlNode* value = Find(use.key);
  if (value == nullptr) return std::nullopt;
  if (value->kind != TomlKind::Float && value->kind != TomlKind::Integer) {
    WrongKind_(*value, use, "a number");
    return std::nullopt;
  }
  const bool whole = value->kind == TomlKind::Integer;
  const double number = whole ? static_cast<double>(value->integer) : value->number;
  if (number >= least && number <= most) return number;
  OutOfRange_(*value, use, NumberText(least), NumberText(most),
              whole ? std::to_string(value->integer) : NumberText(number));
  return std::nullopt;
}

std::optional<std::string> TableReader::Text(KeyUse use) {
  const TomlNode* value = Find(use.key);
  if (value == nullptr) return std::nullopt;
  if (value->kind == TomlKind::String) return value->text;
  WrongKind_(*value, use, "a text");
  return std::nullopt;
}

bool TableReader::HasKnownFormat() {
  constexpr std::int64_t kFormat = 1;
  const TomlNode* value = Find("format");
  if (value == nullptr) return true;
  if (value->kind != TomlKind::Integer) {
    WrongKind_(*value, {"format", "1"}, "a whole number");
    return false;
  }
  if (value->integer == kFormat) return true;
  problems_->Error(value->place,
                   "format " + std::to_string(value->integer) +
                       " is not known here; this version reads format 1 and nothing else in the "
                       "file was read.");
  return false;
}

}  // namespace tesk_midi
