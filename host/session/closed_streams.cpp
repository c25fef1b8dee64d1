#include "host/session/closed_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace orbel::host {

bool FillClosedStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
    // The lowest number that is free, which is this one: those below it are open by now.
    if (::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream) return false;
  }
  return true;
}

}  // namespace orbel::host
