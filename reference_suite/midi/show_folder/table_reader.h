#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "reference_suite/midi/show_folder/file_problems.h"
#include "reference_suite/midi/show_folder/written_song_log.h"
#include "reference_suite/midi/toml/toml_node.h"

namespace tesk_midi {

// A key and how a person would write its value, for messages: {"scale", "0.95"}.
struct KeyUse {
  std::string_view key;
  std::string_view example;
};

// Reads the values of one table. Whatever is there but wrong is added to the file's problems, and reads as
// empty, like what is not there.
//
// Threads    plain object; refers to the table and the problems.
class TableReader {
 public:
  // `name`: what messages call the table, "[[vamp]]"; empty for the top of a file.
  TableReader(const TomlNode& table, std::string name, FileProblems* problems)
      : table_(table), name_(std::move(name)), problems_(problems) {}

  // Every key that is not among `known` is an error. `above`: keys that belong to the top of the file, where
  // somebody may have meant them.
  void RefuseUnknownKeys(std::span<const std::string_view> known,
                         std::span<const std::string_view> above = {});

  const TomlNode* Find(std::string_view key) const;
  // False, and an error, when the key is not there.
  bool Require(KeyUse use);

  std::optional<bool> Boolean(KeyUse use);
  std::optional<std::int64_t> Integer(KeyUse use, std::int64_t least, std::int64_t most);
  std::optional<double> Number(KeyUse use, double least, double most);
  std::optional<std::string> Text(KeyUse use);
  std::optional<WrittenPosition> Position(KeyUse use);

  // Whether the file is of the format that is known here, which one that says nothing is taken to be.
  // Otherwise nothing else in it can be judged.
  bool HasKnownFormat();

 private:
  void WrongKind_(const TomlNode& value, KeyUse use, const char* wanted);
  void OutOfRange_(const TomlNode& value, KeyUse use, const std::string& least, const std::string& most,
                   const std::string& found);
  std::optional<WrittenPosition> TickPosition_(const TomlNode& table, KeyUse use);
  std::optional<WrittenPosition> TextPosition_(const TomlNode& value, KeyUse use);
  std::string In_() const { return name_.empty() ? "" : " in " + name_; }

  const TomlNode& table_;
  std::string name_;
  FileProblems* problems_;
};

// "a whole number", for messages.
const char* KindText(TomlKind kind);

}  // namespace tesk_midi
