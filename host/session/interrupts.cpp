#include "host/session/interrupts.h"

#include <signal.h>

#include <atomic>

namespace orbel::host {
namespace {

std::atomic<int> interrupts{0};
std::atomic<bool> hungUp{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "signal handlers may touch nothing else");

extern "C" void OnSignal(int signal) {
  if (signal == SIGINT) interrupts += 1;
  if (signal == SIGTERM) interrupts += 2;
  if (signal == SIGHUP) hungUp = true;
}

void Handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

}  // namespace

void CatchInterrupts() {
  Handle(SIGINT, OnSignal);
  Handle(SIGTERM, OnSignal);
  Handle(SIGHUP, OnSignal);
  Handle(SIGPIPE, SIG_IGN);
  Handle(SIGXFSZ, SIG_IGN);
}

int InterruptCount() {
  return interrupts;
}

bool TerminalHasHungUp() {
  return hungUp;
}

}  // namespace orbel::host
