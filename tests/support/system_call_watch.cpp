#include "tests/support/system_call_watch.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>

#include <atomic>
#include <cstddef>
#include <vector>

namespace test_support {

namespace {

#ifndef SYS_USER_DISPATCH
constexpr int kUserDispatch = 2;  // of the codes of SIGSYS
#else
constexpr int kUserDispatch = SYS_USER_DISPATCH;
#endif
constexpr int kSetUserDispatch = 59;  // of prctl
constexpr unsigned long kDispatchOn = 1;
constexpr char kAllow = 0;
constexpr char kBlock = 1;

std::atomic<int> forbidden{0};
// The system reads it before each call of a thread that is watched.
thread_local volatile char gate = kAllow;
thread_local long firstCall = -1;

void Count(int, siginfo_t* info, [[maybe_unused]] void* context) {
  if (info->si_code != kUserDispatch) {
    ++forbidden;
    return;
  }
  gate = kAllow;
  firstCall = info->si_syscall;
#ifdef __x86_64__
  // Back to the instruction, two bytes long, which is let through now.
  static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP] -= 2;
#endif
}

void TakeSignals() {
  struct sigaction action {};
  action.sa_sigaction = &Count;
  action.sa_flags = SA_SIGINFO;
  ::sigaction(SIGSYS, &action, nullptr);
}

// Once for each thread.
bool OpenGate() {
#ifdef __x86_64__
  static const bool takesSignals = (TakeSignals(), true);
  thread_local const bool isOpen =
      takesSignals && ::prctl(kSetUserDispatch, kDispatchOn, 0UL, 0UL, &gate) == 0;
  return isOpen;
#else
  return false;
#endif
}

}  // namespace

bool SystemCallWatch::IsPossible() {
  return OpenGate();
}

SystemCallWatch::SystemCallWatch() {
  firstCall = -1;
  if (OpenGate()) gate = kBlock;
}

SystemCallWatch::~SystemCallWatch() {
  gate = kAllow;
}

long SystemCallWatch::GetFirst() const {
  return firstCall;
}

bool ForbidSystemCallsBut(std::initializer_list<long> allowed) {
  TakeSignals();
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
