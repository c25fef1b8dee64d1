#include "host/session/console_lines.h"

#include <iostream>
#include <mutex>
#include <streambuf>
#include <utility>

#include "host/session/drawn_on.h"
#include "host/session/recording_lines.h"
#include "suite/core/log_sink.h"

namespace orbel::host {
namespace {

// The engine's, of whoever asks for the position between the start and the first read, as a display does at
// any moment. The answer is right, and there is nothing to be done.
constexpr const char* kBeforeTheFirstRead =
    "[Warning] SamplesTicksConverter::tickIndexByElapsedSampleCount_ is empty. Returning 0.";

class Console : public std::streambuf {
 public:
  void Hold() {
    const std::lock_guard lock(mutex_);
    holds_ = true;
  }

  void LetGo() {
    const std::lock_guard lock(mutex_);
    holds_ = false;
    for (const std::string& line : std::exchange(held_, {})) Write_(line);
  }

  std::vector<std::string> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(held_, {});
  }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const std::lock_guard lock(mutex_);
    for (std::streamsize index = 0; index < count; ++index) Put_(text[index]);
    return count;
  }

  int_type overflow(int_type letter) override {
    const std::lock_guard lock(mutex_);
    if (!traits_type::eq_int_type(letter, traits_type::eof())) Put_(traits_type::to_char_type(letter));
    return traits_type::not_eof(letter);
  }

 private:
  void Put_(char letter) {
    if (letter != '\n') {
      line_ += letter;
      return;
    }
    std::string line = AsTheCheckSays(std::exchange(line_, ""));
    if (line == kBeforeTheFirstRead) return;
    if (holds_) {
      held_.push_back(std::move(line));
    } else {
      Write_(line);
    }
  }

  // In one piece. On a terminal it takes the place of the progress that stands on the line.
  void Write_(const std::string& line) {
    static const bool onTerminal = MessagesAreDrawnOn();
    std::cerr << (onTerminal ? "\r\x1b[K" + line + "\n" : line + "\n");
  }

  std::mutex mutex_;
  std::string line_;
  std::vector<std::string> held_;
  bool holds_ = false;
};

// Never destroyed: loader threads may outlive main() and still write.
Console& TheConsole() {
  static Console& console = *new Console;
  return console;
}

}  // namespace

void SeparateConsoleFromResults() {
  std::cout.rdbuf(&TheConsole());
  tesk_log::SetSink([](const std::string& line) {
    const std::string whole = line + "\n";
    TheConsole().sputn(whole.data(), static_cast<std::streamsize>(whole.size()));
  });
}

HeldConsoleLines::HeldConsoleLines() {
  TheConsole().Hold();
}

HeldConsoleLines::~HeldConsoleLines() {
  TheConsole().LetGo();
}

std::vector<std::string> HeldConsoleLines::Take() {
  return TheConsole().Take();
}

}  // namespace orbel::host
