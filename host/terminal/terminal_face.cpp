#include "host/terminal/terminal_face.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <memory>

#include "host/session/console_lines.h"
#include "host/session/drawn_on.h"
#include "host/session/failure.h"
#include "host/session/interrupts.h"
#include "host/session/memory_lock.h"
#include "host/session/shown_text.h"
#include "host/session/standard_error.h"
#include "host/terminal/display.h"
#include "host/terminal/keys.h"
#include "host/terminal/raw_mode.h"

namespace orbel::host::terminal {
namespace {

// Often enough that a key is felt at once and a bar line is never missed.
constexpr int kPollMilliseconds = 10;

std::string NotPlayed(const PlayOptions& options) {
  return Shown(options.showPath) + " was not played";
}

// While the show is opened there is nothing to keep, except where a file is begun, which takes itself away.
std::unique_ptr<EndedByInterrupts> WhileOpening(const PlayOptions& options) {
  if (options.output == "file") return nullptr;
  return std::make_unique<EndedByInterrupts>(NotPlayed(options), EndedByInterrupts::HangUp::GoesOn);
}

// One performance, from opening to quitting.
class Performance {
 public:
  Performance(const PlayOptions& options, bool attended)
      : attended_(attended),
        display_(attended && MessagesAreDrawnOn()),
        opening_(WhileOpening(options)),
        live_(WithMessages_(options), attended) {
    opening_.reset();
    if (InterruptCount() > 0) throw Failure("interrupted: " + NotPlayed(options));
  }

  int Run(PlayReport* report) {
    std::unique_ptr<RawMode> raw;
    if (attended_) raw = std::make_unique<RawMode>(STDIN_FILENO);
    Say_(live_.Start());
    while (!MustEnd_()) {
      Say_(console_.Take());
      Say_(live_.Poll(Seconds_()));
      ReadKeys_();
      display_.Status(live_.GetStatus());
    }
    Say_(console_.Take());
    live_.Leave();
    display_.Status(live_.GetStatus());
    display_.End();
    live_.Finish();
    *report = live_.GetReport();
    return live_.GetStatusAtEnd();
  }

 private:
  PlayOptions WithMessages_(PlayOptions options) {
    options.say = [this](const std::string& message) { display_.Message(message); };
    return options;
  }

  double Seconds_() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

  void Say_(const std::vector<std::string>& messages) {
    for (const std::string& message : messages) display_.Message(message);
  }

  bool MustEnd_() {
    if (quit_ || live_.IsOver()) return true;
    // With the terminal gone nobody can start it again once playback has come to a stand.
    if (attended_ && TerminalHasHungUp() && !live_.IsPlaying()) return true;
    const int interrupts = InterruptCount();
    if (interrupts == interruptsSeen_) return false;
    const bool more = interrupts > interruptsSeen_ + 1;
    interruptsSeen_ = interrupts;
    return more || AskToQuit_("Ctrl-C");
  }

  // While a song is under way only the second time in a row ends it.
  bool AskToQuit_(const std::string& key) {
    if (!live_.IsUnderWay() || Seconds_() < quitUntil_) return true;
    quitUntil_ = Seconds_() + 5.0;
    display_.Message(live_.GetStatus().state + ": " + key + " once more ends it");
    return false;
  }

  void ReadKeys_() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const bool reads = attended_ && !TerminalHasHungUp();
    const int patience = live_.HasItsOwnTime() ? 0 : kPollMilliseconds;
    if (::poll(&input, reads ? 1 : 0, patience) <= 0) return;
    char bytes[64];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count <= 0) {
      ::poll(nullptr, 0, kPollMilliseconds);  // a terminal that has gone answers at once, again and again
      return;
    }
    keys_.Feed(std::string(bytes, static_cast<std::size_t>(count)));
    while (const std::optional<Key> key = keys_.Next()) Act_(*key);
  }

  void Act_(const Key& key) {
    if (key.kind == Key::Kind::Quit) quit_ = quit_ || AskToQuit_("q");
    if (key.kind == Key::Kind::PlayOrPause) {
      Say_(live_.Do({live_.IsPlaying() ? CommandKind::Pause : CommandKind::Play, 0.0, ""}));
    }
    if (key.kind == Key::Kind::Command) Say_(live_.Do({key.command, 0.0, ""}));
  }

  const bool attended_;
  HeldConsoleLines console_;  // so that no line of another thread falls into the status line
  Display display_;
  std::unique_ptr<EndedByInterrupts> opening_;  // gone when the show is open
  Live live_;
  KeyReader keys_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  double quitUntil_ = 0.0;
  int interruptsSeen_ = InterruptCount();
  bool quit_ = false;
};

}  // namespace

int Play(const PlayOptions& options, PlayReport* report) {
  const NobodyWaitsForReaders playing;
  const bool attended = ::isatty(STDIN_FILENO) == 1;
  if (attended) {
    std::cerr << "space go   p play/pause   s stop   a once more   n b songs   left right places   up down "
                 "tempo   + - key   0 as written   q quit"
              << std::endl;
  } else if (options.scriptPath.empty()) {
    std::cerr << "No terminal, so nobody at the keys: a vamp is played " << options.vampPasses
              << (options.vampPasses == 1 ? " time" : " times") << ", a caesura waits "
              << ShortNumber(options.caesuraSilence) << " s, and song follows song to the end of the show."
              << std::endl;
  } else {
    std::cerr << "No terminal, so nobody at the keys: the script acts." << std::endl;
  }
  const std::string hint = LockMemory();
  if (!hint.empty()) std::cerr << hint << std::endl;
  return Performance(options, attended).Run(report);
}

}  // namespace orbel::host::terminal
