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
constexpr int kAlways = std::numeric_limits<int>::max();
}  // namespace

long long failReadsFrom = kNever;
long long failReadsTo = kNever;
std::atomic<int> failuresLeft{kAlways};
std::atomic<int> interruptedReads{0};
std::atomic<int> readCount{0};
std::function<void()> happens;
long long happensBehind = kNever;
int happensAtRead = kAlways;
bool pathsAreRegularFiles = false;

void Reset() {
  failReadsFrom = kNever;
  failReadsTo = kNever;
  failuresLeft = kAlways;
  interruptedReads = 0;
  happens = {};
  happensBehind = kNever;
  happensAtRead = kAlways;
  readCount = 0;
  pathsAreRegularFiles = false;
}

}  // namespace file_calls

extern "C" {

ssize_t pread(int descriptor, void* bytes, size_t count, off_t offset) {
  const int number = ++file_calls::readCount;
  if (file_calls::interruptedReads > 0 && file_calls::interruptedReads-- > 0) {
    errno = EINTR;
    return -1;
  }
  {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const bool isBehind = offset + static_cast<long long>(count) > file_calls::happensBehind ||
                          number >= file_calls::happensAtRead;
    if (file_calls::happens && isBehind) std::exchange(file_calls::happens, {})();
  }
  const long long from = file_calls::failReadsFrom;
  if (offset >= from && offset < file_calls::failReadsTo && file_calls::failuresLeft-- > 0) {
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
