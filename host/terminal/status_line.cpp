#include "host/terminal/status_line.h"

#include <cmath>

#include "host/session/shown_text.h"

namespace orbel::host::terminal {
namespace {

// The first `count` characters, never half of one.
std::string FirstCharacters(const std::string& text, std::size_t count) {
  std::size_t characters = 0;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool begins = (static_cast<unsigned char>(text[index]) & 0xc0) != 0x80;
    if (begins && characters++ == count) return text.substr(0, index);
  }
  return text;
}

}  // namespace

std::string StatusLine(const StageStatus& status, std::size_t columns) {
  const std::string gap = "   ";
  return FirstCharacters(status.song + gap + "bar " + status.position + gap +
                             ShortNumber(std::round(status.tempo * 10.0) / 10.0) + " bpm" + gap +
                             status.state + gap + "next: " + status.next +
                             (status.sound.empty() ? "" : gap + status.sound),
                         columns);
}

}  // namespace orbel::host::terminal
