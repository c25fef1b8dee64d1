#include "host/session/row_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>

#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/patient_writing.h"
#include "host/session/shown_text.h"

namespace orbel::host {
namespace {

// An interrupt ends the waiting by itself, but not one that comes just before it.
constexpr int kLookMilliseconds = 100;

bool IsPipe(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

[[noreturn]] void Fail(const std::string& path, int code) {
  throw Failure(Shown(path) + ": cannot be written: " + std::generic_category().message(code) +
                ". Choose another place, or make room.");
}

// Without waiting: a pipe that nobody reads would keep the program in there, whatever interrupts it.
int Open(const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (file >= 0) return file;
  const int code = errno;
  if (code == ENXIO && IsPipe(path)) {
    throw Failure(
        Shown(path) +
        ": cannot be written: it is a pipe that nobody reads. Start its reader first, or give another "
        "name.");
  }
  Fail(path, code);
}

}  // namespace

RowStream::RowStream(const std::string& path, const std::string& ifInterrupted)
    : path_(path), ifInterrupted_(ifInterrupted), file_(Open(path)) {}

RowStream::~RowStream() {
  ::close(file_);
}

void RowStream::Write(const std::string& text) const {
  for (std::string_view left = text; !left.empty();) {
    const ssize_t written = ::write(file_, left.data(), left.size());
    if (written >= 0) {
      left.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      WaitForRoom_();
    } else if (errno != EINTR) {
      Fail(path_, errno);
    }
  }
}

void RowStream::WaitForRoom_() const {
  if (InterruptCount() > 0) throw Failure("interrupted: " + ifInterrupted_);
  HasRoomWithin(file_, kLookMilliseconds);
}

}  // namespace orbel::host
