#include "tests/support/system_call_watch.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <atomic>
#include <cstddef>
#include <vector>

namespace test_support {

namespace {

std::atomic<int> forbidden{0};

void Count(int) {
  ++forbidden;
}

}  // namespace

bool ForbidSystemCallsBut(std::initializer_list<long> allowed) {
  struct sigaction action {};
  action.sa_handler = &Count;
  ::sigaction(SIGSYS, &action, nullptr);
  std::vector<long> all{SYS_exit,           SYS_exit_group,   SYS_munmap, SYS_madvise,
                        SYS_rt_sigprocmask, SYS_rt_sigreturn, SYS_rseq};
  all.insert(all.end(), allowed);
  std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto jump = static_cast<__u8>(all.size() - i);
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<__u32>(all[i]), jump, 0));
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
}

int GetForbiddenSystemCalls() {
  return forbidden;
}

}  // namespace test_support
