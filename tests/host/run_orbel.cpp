#include "tests/host/run_orbel.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/host/show_files.h"

namespace host_tests {
namespace {

std::string OutputPath(const char* kind) {
  static int count = 0;
  return (std::filesystem::temp_directory_path() /
          ("orbel_run_" + std::to_string(::getpid()) + "_" + std::to_string(++count) + kind))
      .string();
}

void Redirect(int to, const std::string& path, int flags) {
  const int file = ::open(path.c_str(), flags, 0600);
  if (file < 0 || ::dup2(file, to) < 0) ::_exit(126);
}

}  // namespace

RunningOrbel::RunningOrbel(const std::vector<std::string>& arguments, const std::string& outPath)
    : ownsOut_(outPath.empty()),
      outPath_(ownsOut_ ? OutputPath(".out") : outPath),
      messagesPath_(OutputPath(".err")) {
  std::vector<std::string> words{ORBEL_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  process_ = ::fork();
  if (process_ != 0) return;
  Redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
  Redirect(STDOUT_FILENO, outPath_, O_WRONLY | O_CREAT | O_TRUNC);
  Redirect(STDERR_FILENO, messagesPath_, O_WRONLY | O_CREAT | O_TRUNC);
  ::execv(argv[0], argv.data());
  ::_exit(127);
}

RunningOrbel::~RunningOrbel() {
  if (process_ > 0) {
    Signal(SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  if (ownsOut_) std::filesystem::remove(outPath_);
  std::filesystem::remove(messagesPath_);
}

void RunningOrbel::Signal(int signal) const {
  if (process_ > 0) ::kill(process_, signal);
}

bool RunningOrbel::Says(const std::string& text) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (std::chrono::steady_clock::now() < deadline) {
    if (ReadText(messagesPath_).find(text) != std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

bool RunningOrbel::EndsWithin(std::chrono::seconds time) const {
  const auto deadline = std::chrono::steady_clock::now() + time;
  siginfo_t ended{};
  // Looked at and left for WaitForEnd.
  while (::waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         ended.si_pid == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      Signal(SIGKILL);
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

Ended RunningOrbel::WaitForEnd() {
  int status = 0;
  rusage used{};
  ::wait4(process_, &status, 0, &used);
  process_ = -1;
  Ended run;
  run.peakBytes = used.ru_maxrss * 1024LL;
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (ownsOut_) run.out = ReadText(outPath_);
  run.messages = ReadText(messagesPath_);
  return run;
}

Ended Orbel(const std::vector<std::string>& arguments, const std::string& outPath) {
  return RunningOrbel(arguments, outPath).WaitForEnd();
}

}  // namespace host_tests
