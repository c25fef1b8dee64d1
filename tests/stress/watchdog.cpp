#include "tests/stress/watchdog.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

namespace stress {

namespace {

// Filled by the interrupted thread, read by the one that asked when it is done.
std::array<void*, 64> frames{};
std::atomic<int> depth{-1};

extern "C" void TakeStack(int /*signal*/) {
  depth = ::backtrace(frames.data(), static_cast<int>(frames.size()));
}

std::string Describe(void* address) {
  Dl_info info{};
  std::ostringstream line;
  if (::dladdr(address, &info) == 0) {
    line << address;
    return line.str();
  }
  // The offset in its file is what addr2line asks for.
  line << info.dli_fname << "+0x" << std::hex
       << static_cast<char*>(address) - static_cast<char*>(info.dli_fbase);
  if (info.dli_sname != nullptr) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status), &std::free);
    line << "  " << (status == 0 ? name.get() : info.dli_sname);
  }
  return line.str();
}

std::string StackOf(pid_t thread) {
  depth = -1;
  if (::syscall(SYS_tgkill, ::getpid(), thread, SIGUSR2) != 0) return "  has ended\n";
  for (int i = 0; i < 10'000 && depth < 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  if (depth < 0) return "  does not answer\n";
  std::string text;
  for (int i = 0; i < depth; ++i) text += "  " + Describe(frames[static_cast<std::size_t>(i)]) + "\n";
  return text;
}

}  // namespace

std::string StacksOfAllThreads() {
  std::array<void*, 1> first{};
  ::backtrace(first.data(), 1);  // loads what it needs now and not inside a signal handler
  struct sigaction action {};
  action.sa_handler = TakeStack;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGUSR2, &action, nullptr);
  std::string text;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    const pid_t thread = static_cast<pid_t>(std::stol(entry.path().filename().string()));
    std::string name;
    std::getline(std::ifstream(entry.path() / "comm"), name);
    text += "thread " + std::to_string(thread) + " \"" + name + "\"\n";
    text += thread == ::gettid() ? "  asks for the stacks\n" : StackOf(thread);
  }
  return text;
}

Watchdog::Watchdog(std::chrono::milliseconds patience) : thread_([this, patience] { Watch_(patience); }) {}

Watchdog::~Watchdog() {
  ends_ = true;
  thread_.join();
}

void Watchdog::Beat(const char* doing) {
  doing_ = doing;
  ++beats_;
}

void Watchdog::Watch_(std::chrono::milliseconds patience) {
  auto since = std::chrono::steady_clock::now();
  unsigned long long last = beats_;
  while (!ends_) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const auto now = std::chrono::steady_clock::now();
    if (beats_ != last) {
      last = beats_;
      since = now;
    }
    if (now - since < patience) continue;
    std::fprintf(stderr, "WATCHDOG: no progress for %lld ms in: %s\n%s",
                 static_cast<long long>(patience.count()), doing_.load(), StacksOfAllThreads().c_str());
    std::fflush(stderr);
    ::_exit(99);
  }
}

}  // namespace stress
