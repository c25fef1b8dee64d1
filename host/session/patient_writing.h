#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <optional>

namespace orbel::host {

// Writes to a terminal or a pipe wait in the system for whoever reads there, where an interrupt would not end
// them, unless the descriptor says otherwise; and that is shared with whoever else has it. So the same thing
// is opened once more. Returns `stream` itself where that is refused or makes no difference.
int OpenWithoutWaiting(int stream);

// Threads    ANY, signal handlers too.
bool HasRoomWithin(int file, int milliseconds) noexcept;

// As ::write, for a part of what is given; where there is no room, EAGAIN. Threads: ANY, handlers too.
ssize_t WriteSome(int file, const char* bytes, std::size_t count) noexcept;

// How long a writer waits for room: for good, until an interrupt or the terminal's end comes; a second from
// then on. Threads: one at a time.
class Patience {
 public:
  static constexpr int kLastWaitMilliseconds = 1000;

  // False when it is not worth while any more. Otherwise look again.
  bool WaitForRoom(int file);
  // As if an interrupt had come.
  void Hurry();

 private:
  std::optional<std::chrono::steady_clock::time_point> lastWait_;  // until when
};

}  // namespace orbel::host
