#include "tests/host/terminal_program.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <cstdlib>
#include <regex>

namespace host_tests {

OrbelInATerminal::OrbelInATerminal(const std::vector<std::string>& arguments, const char* kind) {
  std::vector<std::string> words{ORBEL_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  winsize size{25, 100, 0, 0};
  // The test keeps the program's side open too, to look at it when the program has gone.
  if (::openpty(&terminal_, &keptOpen_, nullptr, nullptr, &size) != 0) return;
  process_ = ::fork();
  if (process_ != 0) return;
  ::close(terminal_);
  if (::login_tty(keptOpen_) != 0 || ::setenv("TERM", kind, 1) != 0) ::_exit(126);
  ::execv(argv[0], argv.data());
  ::_exit(127);
}

OrbelInATerminal::~OrbelInATerminal() {
  if (process_ > 0) {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  CloseTerminal();
}

void OrbelInATerminal::Type(const std::string& keys) const {
  // Without a program the number would stand for every process there is.
  if (::write(terminal_, keys.data(), keys.size()) < 0 && process_ > 0) ::kill(process_, SIGKILL);
}

bool OrbelInATerminal::Shows(const std::string& text) {
  return ShowsWhat_([&] {
    const std::size_t at = screen_.find(text, seen_);
    return at == std::string::npos ? at : at + text.size();
  });
}

bool OrbelInATerminal::ShowsLike(const std::string& pattern) {
  const std::regex wanted(pattern);
  return ShowsWhat_([&] {
    std::smatch found;
    const auto from = screen_.cbegin() + static_cast<std::ptrdiff_t>(seen_);
    if (!std::regex_search(from, screen_.cend(), found, wanted)) return std::string::npos;
    return static_cast<std::size_t>(found[0].second - screen_.cbegin());
  });
}

bool OrbelInATerminal::ShowsWhat_(const std::function<std::size_t()>& find) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (process_ > 0 && std::chrono::steady_clock::now() < deadline) {
    const std::size_t end = find();
    if (end != std::string::npos) {
      seen_ = end;
      return true;
    }
    Read_();
  }
  return false;
}

void OrbelInATerminal::PassOver() {
  while (Read_(0)) {
  }
  seen_ = screen_.size();
}

bool OrbelInATerminal::Read_(int milliseconds) {
  pollfd input{terminal_, POLLIN, 0};
  if (::poll(&input, 1, milliseconds) <= 0) return false;
  char bytes[4096];
  const ssize_t count = ::read(terminal_, bytes, sizeof bytes);
  if (count > 0) screen_.append(bytes, static_cast<std::size_t>(count));
  return count > 0;
}

bool OrbelInATerminal::IsAsBefore() const {
  termios mode{};
  return ::tcgetattr(keptOpen_, &mode) == 0 && (mode.c_lflag & ICANON) != 0 && (mode.c_lflag & ECHO) != 0;
}

void OrbelInATerminal::CloseTerminal() {
  for (int* file : {&terminal_, &keptOpen_}) {
    if (*file >= 0) ::close(*file);
    *file = -1;
  }
}

int OrbelInATerminal::WaitForEnd() {
  if (process_ <= 0) return -1;
  int status = 0;
  while (::waitpid(process_, &status, WNOHANG) == 0) {
    if (terminal_ >= 0) Read_();  // a terminal that nobody reads would hold the program up
    if (terminal_ < 0) ::poll(nullptr, 0, 20);
  }
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace host_tests
