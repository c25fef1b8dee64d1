#include "host/terminal/status_line.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/session/shown_text.h"

namespace orbel::host::terminal {
namespace {

// Not one of the bytes that go on with a character of UTF-8.
bool BeginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
}

// Empty for tempo and key as written.
std::string TempoAndKey(const StageStatus& status) {
  std::string text;
  if (status.tempoScale != 1.0) text += " (x" + ShortNumber(status.tempoScale) + ")";
  if (status.transposition == 0) return text;
  const std::string sign = status.transposition > 0 ? "+" : "";
  const bool one = std::abs(status.transposition) == 1;
  return text + " " + sign + std::to_string(status.transposition) + (one ? " semitone" : " semitones");
}

std::size_t CountCharacters(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

// A song's name gives way to what changes, down to a few characters.
std::string NameWithin(const std::string& name, std::size_t columns, std::size_t charactersBehind) {
  constexpr std::size_t kLeast = 12;
  const std::size_t room = std::max(kLeast, columns - std::min(columns, charactersBehind));
  return CountCharacters(name) <= room ? name : FirstCharacters(name, room - 3) + "...";
}

}  // namespace

std::string FirstCharacters(const std::string& text, std::size_t count) {
  std::size_t characters = 0;
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (BeginsCharacter(text[index]) && characters++ == count) return text.substr(0, index);
  }
  return text;
}

std::string StatusLine(const StageStatus& status, std::size_t columns) {
  const std::string gap = "   ";
  const std::string rest = gap + "bar " + status.position + gap +
                           ShortNumber(std::round(status.tempo * 10.0) / 10.0) + " bpm" +
                           TempoAndKey(status) + gap + status.state + gap + "next: " + status.next;
  const std::string sound = status.sound.empty() ? "" : gap + status.sound;
  return FirstCharacters(NameWithin(status.song, columns, CountCharacters(rest)) + rest + sound, columns);
}

}  // namespace orbel::host::terminal
