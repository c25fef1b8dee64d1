#include "host/terminal/display.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <iostream>

#include "host/session/interrupts.h"
#include "host/session/standard_error.h"
#include "host/terminal/status_line.h"

namespace orbel::host::terminal {
namespace {

constexpr char kFromLineStart[] = "\r\x1b[K";  // and the rest of the line is empty
constexpr char kFromHere[] = "\r\x1b[J";       // the same, and everything below

std::size_t TerminalColumns() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 2) return 79;
  return size.ws_col - 1U;  // the last column would wrap on some terminals
}

}  // namespace

void Display::Message(const std::string& text) {
  if (TerminalHasHungUp()) return;
  std::cerr << (onTerminal_ ? kFromHere : "") + text + "\n" << std::flush;  // whole, or lost whole
  shown_.clear();
}

void Display::Status(const StageStatus& status) {
  if (TerminalHasHungUp() || !EverythingIsSaid()) return;
  if (onTerminal_) {
    StatusOnTerminal_(status);
    return;
  }
  const std::string change = status.song + status.state;
  if (change != shown_) std::cerr << StatusLine(status, std::string::npos) + "\n" << std::flush;
  shown_ = change;
}

void Display::StatusOnTerminal_(const StageStatus& status) {
  const std::size_t columns = TerminalColumns();
  StageStatus performance = status;
  performance.sound.clear();
  const std::string lines = kFromLineStart + StatusLine(performance, columns) + "\n" + kFromLineStart +
                            FirstCharacters(status.sound, columns) + "\x1b[A\r";
  if (lines != shown_) std::cerr << lines << std::flush;
  shown_ = lines;
}

void Display::End() {
  if (onTerminal_ && !TerminalHasHungUp()) std::cerr << "\n" << std::endl;
}

}  // namespace orbel::host::terminal
