#include "tests/reference_suite/audio/support/file_calls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <mutex>
#include <utility>

namespace file_calls {

namespace {
constexpr long long kNever = std::numeric_limits<long long>::max();
}

long long failReadsFrom = kNever;
long long failReadsTo = kNever;
int interruptedReads = 0;
int readCount = 0;
std::function<void()> happens;
long long happensBehind = kNever;
bool pathsAreRegularFiles = false;

void Reset() {
  failReadsFrom = kNever;
  failReadsTo = kNever;
  interruptedReads = 0;
  happens = {};
  happensBehind = kNever;
  pathsAreRegularFiles = false;
}

}  // namespace file_calls

extern "C" {

ssize_t pread(int descriptor, void* bytes, size_t count, off_t offset) {
  ++file_calls::readCount;
  if (file_calls::interruptedReads > 0) {
    --file_calls::interruptedReads;
    errno = EINTR;
    return -1;
  }
  {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const bool isBehind = offset + static_cast<long long>(count) > file_calls::happensBehind;
    if (file_calls::happens && isBehind) std::exchange(file_calls::happens, {})();
  }
  const long long from = file_calls::failReadsFrom;
  if (offset >= from && offset < file_calls::failReadsTo) {
    errno = EIO;
    return -1;
  }
  // A read that runs into the broken place delivers what lies before it.
  if (offset < from && offset + static_cast<long long>(count) > from)
    count = static_cast<size_t>(from - offset);
  return ::syscall(SYS_pread64, descriptor, bytes, count, offset);
}

int stat(const char* path, struct stat* status) noexcept {
  const int result = ::fstatat(AT_FDCWD, path, status, 0);
  if (file_calls::pathsAreRegularFiles) status->st_mode = S_IFREG | 0600;
  return result;
}
}
