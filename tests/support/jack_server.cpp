#include "tests/support/jack_server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

namespace test_support {

namespace {

// False when it has not ended by then. Where the system cannot tell, nothing is known to hang.
bool EndsWithin(pid_t process, std::chrono::milliseconds patience) {
  pollfd ended{static_cast<int>(::syscall(SYS_pidfd_open, process, 0)), POLLIN, 0};
  if (ended.fd < 0) return true;
  const int count = ::poll(&ended, 1, static_cast<int>(patience.count()));
  ::close(ended.fd);
  return count == 1;
}

// Killed when it has not ended by then.
int StatusOf(pid_t process, std::chrono::milliseconds patience) {
  if (!EndsWithin(process, patience)) ::kill(process, SIGKILL);
  int status = -1;
  ::waitpid(process, &status, 0);
  return status;
}

// Asked by another program: an attempt that fails takes memory away from a client of this one whose server
// has died, and that has not been closed yet. One that gets no answer at all is given up, and asked again.
bool Answers(const std::string& server) {
  posix_spawn_file_actions_t silence;
  ::posix_spawn_file_actions_init(&silence);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    ::posix_spawn_file_actions_addopen(&silence, stream, "/dev/null", O_WRONLY, 0);
  }
  std::string words[] = {"jack_lsp", "-s", server};
  char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
  pid_t process = -1;
  const int error = ::posix_spawnp(&process, "jack_lsp", &silence, nullptr, arguments, environ);
  ::posix_spawn_file_actions_destroy(&silence);
  return error == 0 && StatusOf(process, std::chrono::seconds(5)) == 0;
}

}  // namespace

// A machine has room for eight servers by name, those that were killed included until one of the same name
// takes their place. So names are few, and each process holds one of them while it lasts.
std::string JackServer::NewName() {
  static const std::string name = [] {
    for (int number = 0;; number = (number + 1) % 5) {
      const std::string candidate = "orbeltest" + std::to_string(number);
      const std::string path = std::filesystem::temp_directory_path() / (candidate + ".lock");
      const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
      if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0) return candidate;
      if (file >= 0) ::close(file);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }();
  return name;
}

JackServer::JackServer(const Shape& shape, std::string name)
    : name_(name.empty() ? NewName() : std::move(name)) {
  const std::vector<std::string> words = WordsFor_(shape);
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  arguments.push_back(nullptr);
  // As a host has to: JACK's library writes to servers that a test has killed.
  ::signal(SIGPIPE, SIG_IGN);
  const auto start = std::chrono::steady_clock::now();
  Start_(arguments.data());
  while (!Answers(name_)) {
    const auto waited = std::chrono::steady_clock::now() - start;
    if (::waitpid(process_, nullptr, WNOHANG) == process_) {
      process_ = -1;
      // The name is taken until the system has buried the server of a test that was killed.
      if (waited < std::chrono::seconds(20)) {
        Start_(arguments.data());
      } else {
        ADD_FAILURE() << "jackd has ended at once; is it installed?";
        return;
      }
    }
    if (waited > std::chrono::minutes(1)) {
      ADD_FAILURE() << "jackd does not answer";
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

void JackServer::Start_(const char* const* arguments) {
  process_ = ::fork();
  if (process_ == 0) Run_(arguments);
}

JackServer::~JackServer() {
  End(SIGTERM);
}

std::vector<std::string> JackServer::WordsFor_(const Shape& shape) const {
  const std::string realTime = shape.priority == 0 ? "--no-realtime" : "-P" + std::to_string(shape.priority);
  return {"jackd", "-n",
          name_,   realTime,
          "-d",    "dummy",
          "-r",    std::to_string(shape.rateHz),
          "-p",    std::to_string(shape.periodFrames),
          "-P",    std::to_string(shape.outputs)};
}

// Between fork and exec: other threads of the test may have held any lock.
void JackServer::Run_(const char* const* arguments) {
  // A test that dies takes its server along.
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  const int silence = ::open("/dev/null", O_RDWR);
  for (int stream = 0; stream < 3; ++stream) ::dup2(silence, stream);
  ::execvp("jackd", const_cast<char* const*>(arguments));
  ::_exit(127);
}

void JackServer::Signal(int signal) const {
  if (process_ > 0) ::kill(process_, signal);
}

void JackServer::End(int signal) {
  if (process_ <= 0) return;
  Signal(SIGCONT);
  Signal(signal);
  StatusOf(process_, std::chrono::seconds(20));
  process_ = -1;
}

}  // namespace test_support
