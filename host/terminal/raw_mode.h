#pragma once

#include <termios.h>

namespace orbel::host::terminal {

// Keys arrive one by one and unseen while this lives; Ctrl-C stays a signal. Keys that would stop the show
// behind the performer's back do nothing: Ctrl-Z (suspend), Ctrl-\ (quit), Ctrl-S (hold the screen, and with
// it whoever writes to it). Restores what was before.
// Threads    HOST.
class RawMode {
 public:
  // `file`: a descriptor of a terminal.
  explicit RawMode(int file);
  ~RawMode();
  RawMode(const RawMode&) = delete;
  RawMode& operator=(const RawMode&) = delete;

 private:
  int file_;
  bool changed_ = false;
  termios before_{};
};

}  // namespace orbel::host::terminal
