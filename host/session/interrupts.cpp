#include "host/session/interrupts.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

#include "host/session/drawn_on.h"
#include "host/session/failure.h"
#include "host/session/standard_error.h"

namespace orbel::host {
namespace {

std::atomic<int> interrupts{0};
std::atomic<bool> hungUp{false};
// What the program says when a signal ends it; null while signals are only counted.
std::atomic<const std::string*> lastWords{nullptr};
std::atomic<int> speakers{0};  // handlers that may have them in hand
std::atomic<bool> hangUpEnds{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free &&
                  std::atomic<const std::string*>::is_always_lock_free,
              "signal handlers may touch nothing else");

// Whoever is interrupted twice says it once.
void EndWithLastWords() {
  speakers += 1;
  const std::string* const words = lastWords.exchange(nullptr);
  if (words != nullptr) {
    SayAtOnce(words->data(), words->size());
    ::_exit(kFailed);
  }
  speakers -= 1;
}

// A handler on another thread may have them already; it ends the program.
void TakeWordsBack() {
  lastWords = nullptr;
  while (speakers > 0) ::poll(nullptr, 0, 1);
}

extern "C" void OnSignal(int signal) {
  if (signal == SIGINT) interrupts += 1;
  if (signal == SIGTERM) interrupts += 2;
  if (signal == SIGHUP) hungUp = true;
  if (signal != SIGHUP || hangUpEnds) EndWithLastWords();
}

void Handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

bool IsIgnored(int signal) {
  struct sigaction before {};
  return sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN;
}

}  // namespace

void CatchInterrupts() {
  Handle(SIGINT, OnSignal);
  Handle(SIGTERM, OnSignal);
  if (!IsIgnored(SIGHUP)) Handle(SIGHUP, OnSignal);
  Handle(SIGPIPE, SIG_IGN);
  Handle(SIGXFSZ, SIG_IGN);
}

int InterruptCount() {
  return interrupts;
}

bool TerminalHasHungUp() {
  return hungUp;
}

void RequireUninterrupted(const std::string& what) {
  if (InterruptCount() > 0 || TerminalHasHungUp()) throw Failure("interrupted: " + what);
}

// A line that is being drawn makes room for the words.
EndedByInterrupts::EndedByInterrupts(const std::string& what, HangUp hangUp)
    : words_((MessagesAreDrawnOn() ? "\r\x1b[K" : "") + ("orbel: interrupted: " + what) + "\n") {
  hangUpEnds = hangUp == HangUp::Ends;
  lastWords = &words_;
  const bool ends = InterruptCount() > 0 || (hangUpEnds && TerminalHasHungUp());
  if (!ends) return;
  TakeWordsBack();
  throw Failure("interrupted: " + what);
}

EndedByInterrupts::~EndedByInterrupts() {
  TakeWordsBack();
}

}  // namespace orbel::host
