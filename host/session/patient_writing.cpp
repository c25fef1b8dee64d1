#include "host/session/patient_writing.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "host/session/interrupts.h"

namespace orbel::host {

int OpenWithoutWaiting(int stream) {
  struct stat status {};
  if (::fstat(stream, &status) != 0) return stream;
  if (!S_ISFIFO(status.st_mode) && ::isatty(stream) != 1) return stream;
  const std::string path = "/proc/self/fd/" + std::to_string(stream);
  const int opened = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  return opened < 0 ? stream : opened;
}

bool HasRoomWithin(int file, int milliseconds) noexcept {
  pollfd out{file, POLLOUT, 0};
  return ::poll(&out, 1, milliseconds) > 0;
}

ssize_t WriteSome(int file, const char* bytes, std::size_t count) noexcept {
  constexpr std::size_t kAtOnce = 512;  // a pipe that has room takes as much as this
  if (HasRoomWithin(file, 0)) return ::write(file, bytes, std::min(count, kAtOnce));
  errno = EAGAIN;
  return -1;
}

bool Patience::WaitForRoom(int file) {
  if (InterruptCount() > 0 || TerminalHasHungUp()) Hurry();
  if (lastWait_ && std::chrono::steady_clock::now() >= *lastWait_) return false;
  constexpr int kLookMilliseconds = 50;
  // Room for less than was to be written shows as room.
  constexpr int kPauseMilliseconds = 2;
  ::poll(nullptr, 0, kPauseMilliseconds);
  HasRoomWithin(file, kLookMilliseconds);
  return true;
}

void Patience::Hurry() {
  if (lastWait_) return;
  lastWait_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLastWaitMilliseconds);
}

}  // namespace orbel::host
