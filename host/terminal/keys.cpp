#include "host/terminal/keys.h"

namespace orbel::host::terminal {
namespace {

constexpr char kEscape = '\x1b';

Key Of(CommandKind command) {
  return {Key::Kind::Command, command};
}

Key KeyOf(char byte) {
  switch (byte) {
    case ' ':
      return Of(CommandKind::Go);
    case 's':
      return Of(CommandKind::Stop);
    case 'a':
      return Of(CommandKind::Again);
    case 'n':
      return Of(CommandKind::Next);
    case 'b':
      return Of(CommandKind::Previous);
    case '+':
      return Of(CommandKind::Higher);
    case '-':
      return Of(CommandKind::Lower);
    case '0':
      return Of(CommandKind::AsWritten);
    case 'p':
      return {Key::Kind::PlayOrPause, CommandKind::Play};
    case 'q':
      return {Key::Kind::Quit, CommandKind::Stop};
    default:
      return {};
  }
}

}  // namespace

std::optional<Key> KeyReader::Next() {
  if (bytes_.empty()) return std::nullopt;
  if (bytes_[0] == kEscape) return NextSequence_();
  const Key key = KeyOf(bytes_[0]);
  bytes_.erase(0, 1);
  return key;
}

// ESC [ parameters letter, or ESC O letter.
std::optional<Key> KeyReader::NextSequence_() {
  if (bytes_.size() < 2) return std::nullopt;
  if (bytes_[1] != '[' && bytes_[1] != 'O') {
    bytes_.erase(0, 1);
    return Key{};
  }
  std::size_t last = 2;
  while (last < bytes_.size() && bytes_[last] >= '\x20' && bytes_[last] < '\x40') ++last;
  if (last >= bytes_.size()) return std::nullopt;
  const char letter = bytes_[last];
  const bool plain = last == 2;
  bytes_.erase(0, last + 1);
  if (plain && letter == 'A') return Of(CommandKind::Faster);
  if (plain && letter == 'B') return Of(CommandKind::Slower);
  if (plain && letter == 'C') return Of(CommandKind::Right);
  if (plain && letter == 'D') return Of(CommandKind::Left);
  return Key{};
}

}  // namespace orbel::host::terminal
