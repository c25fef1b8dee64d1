#include "host/terminal/status_line.h"

#include <cmath>
#include <cstdlib>

#include "host/session/shown_text.h"

namespace orbel::host::terminal {
namespace {

// Empty for tempo and key as written.
std::string TempoAndKey(const StageStatus& status) {
  std::string text;
  if (status.tempoScale != 1.0) text += " (x" + ShortNumber(status.tempoScale) + ")";
  if (status.transposition == 0) return text;
  const std::string sign = status.transposition > 0 ? "+" : "";
  const bool one = std::abs(status.transposition) == 1;
  return text + " " + sign + std::to_string(status.transposition) + (one ? " semitone" : " semitones");
}

}  // namespace

std::string FirstCharacters(const std::string& text, std::size_t count) {
  std::size_t characters = 0;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool begins = (static_cast<unsigned char>(text[index]) & 0xc0) != 0x80;
    if (begins && characters++ == count) return text.substr(0, index);
  }
  return text;
}

std::string StatusLine(const StageStatus& status, std::size_t columns) {
  const std::string gap = "   ";
  return FirstCharacters(status.song + gap + "bar " + status.position + gap +
                             ShortNumber(std::round(status.tempo * 10.0) / 10.0) + " bpm" +
                             TempoAndKey(status) + gap + status.state + gap + "next: " + status.next +
                             (status.sound.empty() ? "" : gap + status.sound),
                         columns);
}

}  // namespace orbel::host::terminal
