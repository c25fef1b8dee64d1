#include "host/terminal/raw_mode.h"

#include <unistd.h>

namespace orbel::host::terminal {

RawMode::RawMode(int file) : file_(file) {
  if (::tcgetattr(file_, &before_) != 0) return;
  termios raw = before_;
  raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  raw.c_iflag &= ~static_cast<tcflag_t>(IXON);
  raw.c_cc[VSUSP] = _POSIX_VDISABLE;
  raw.c_cc[VQUIT] = _POSIX_VDISABLE;
  raw.c_cc[VMIN] = 0;
  raw.c_cc[VTIME] = 0;
  changed_ = ::tcsetattr(file_, TCSANOW, &raw) == 0;
}

RawMode::~RawMode() {
  if (changed_) ::tcsetattr(file_, TCSANOW, &before_);
}

}  // namespace orbel::host::terminal
