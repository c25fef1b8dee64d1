#pragma once

#include <optional>
#include <string>

#include "host/session/script.h"

namespace orbel::host::terminal {

// What a key asks for.
struct Key {
  enum class Kind { Command, PlayOrPause, Quit, Unknown };
  Kind kind = Kind::Unknown;
  CommandKind command = CommandKind::Go;
};

// Takes bytes as a terminal sends them and gives keys: space go, p, s, a, n, b, q, +, -, 0, and the arrows,
// which arrive as three bytes, possibly in pieces. A sequence that is none of these is passed over whole.
// Threads one at a time.
class KeyReader {
 public:
  void Feed(const std::string& bytes) { bytes_ += bytes; }
  // The next key; nothing while there is none, or only the beginning of one.
  std::optional<Key> Next();

 private:
  std::optional<Key> NextSequence_();

  std::string bytes_;
};

}  // namespace orbel::host::terminal
