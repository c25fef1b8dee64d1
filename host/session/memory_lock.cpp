#include "host/session/memory_lock.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace orbel::host {

std::string LockMemory() {
  // Under a limit the lock itself can succeed, and then no thread can be started any more, since its stack
  // cannot be locked: better none than that.
  rlimit limit{};
  const bool limited = ::getrlimit(RLIMIT_MEMLOCK, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
  const bool mayLock = ::geteuid() == 0 || !limited;
  // Pages are locked when they are first used: nothing is fetched that nobody needs.
  if (mayLock && ::mlockall(MCL_CURRENT | MCL_FUTURE | MCL_ONFAULT) == 0) return "";
  return "the system does not let memory be locked, so sound may drop out when memory runs short; for a "
         "stage machine put \"@audio - memlock unlimited\" and \"@audio - rtprio 95\" into "
         "/etc/security/limits.d/audio.conf, add yourself to the group audio, and log in again";
}

}  // namespace orbel::host
