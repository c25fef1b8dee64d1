#include "tests/host/demo/write_faults.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace write_faults {

Faults faults;

}  // namespace write_faults

using write_faults::faults;

extern "C" {

ssize_t write(int descriptor, const void* bytes, size_t count) {
  if (faults.interruptedWrites > 0) {
    --faults.interruptedWrites;
    errno = EINTR;
    return -1;
  }
  if (faults.room == 0) {
    errno = ENOSPC;
    return -1;
  }
  if (faults.room > 0) {
    count = std::min(count, static_cast<size_t>(faults.room));
    faults.room -= static_cast<long long>(count);
  }
  return ::syscall(SYS_write, descriptor, bytes, count);
}

int fsync(int descriptor) {
  if (faults.failSync) {
    errno = EIO;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

int close(int descriptor) {
  const int result = static_cast<int>(::syscall(SYS_close, descriptor));
  if (faults.failClose) {
    errno = EDQUOT;
    return -1;
  }
  return result;
}

int rename(const char* from, const char* to) noexcept {
  if (faults.failRename) {
    errno = EACCES;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
}
