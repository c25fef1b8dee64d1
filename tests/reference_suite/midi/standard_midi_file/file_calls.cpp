#include "tests/reference_suite/midi/standard_midi_file/file_calls.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <cerrno>

namespace file_calls {

int interruptedReads = 0;
bool failStatus = false;
int readCount = 0;

}  // namespace file_calls

extern "C" {

ssize_t read(int descriptor, void* bytes, size_t count) {
  ++file_calls::readCount;
  if (file_calls::interruptedReads > 0) {
    --file_calls::interruptedReads;
    errno = EINTR;
    return -1;
  }
  return ::syscall(SYS_read, descriptor, bytes, count);
}

int fstat(int descriptor, struct stat* status) noexcept {
  if (file_calls::failStatus) {
    errno = EOVERFLOW;
    return -1;
  }
  return ::fstatat(descriptor, "", status, AT_EMPTY_PATH);
}
}
