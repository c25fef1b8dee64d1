#include "tests/support/jack_server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <jack/jack.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

namespace test_support {

namespace {

void Ignore(const char*) {}

bool Answers(const std::string& server) {
  ::jack_set_error_function(&Ignore);
  ::jack_set_info_function(&Ignore);
  const auto options = static_cast<jack_options_t>(JackNoStartServer | JackServerName);
  jack_client_t* const client = ::jack_client_open("looking", options, nullptr, server.c_str());
  if (client == nullptr) return false;
  ::jack_client_close(client);
  return true;
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
  process_ = ::fork();
  if (process_ == 0) Run_(shape);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!Answers(name_)) {
    if (::waitpid(process_, nullptr, WNOHANG) == process_) {
      process_ = -1;
      ADD_FAILURE() << "jackd has ended at once; is it installed?";
      return;
    }
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "jackd does not answer";
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

JackServer::~JackServer() {
  End(SIGTERM);
}

void JackServer::Run_(const Shape& shape) const {
  // A test that dies takes its server along.
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  const int silence = ::open("/dev/null", O_RDWR);
  for (int stream = 0; stream < 3; ++stream) ::dup2(silence, stream);
  const std::string rate = std::to_string(shape.rateHz);
  const std::string period = std::to_string(shape.periodFrames);
  const std::string outputs = std::to_string(shape.outputs);
  const std::string realTime = shape.priority == 0 ? "--no-realtime" : "-P" + std::to_string(shape.priority);
  ::execlp("jackd", "jackd", "-n", name_.c_str(), realTime.c_str(), "-d", "dummy", "-r", rate.c_str(), "-p",
           period.c_str(), "-P", outputs.c_str(), static_cast<char*>(nullptr));
  ::_exit(127);
}

void JackServer::Signal(int signal) const {
  if (process_ > 0) ::kill(process_, signal);
}

void JackServer::End(int signal) {
  if (process_ <= 0) return;
  Signal(SIGCONT);
  Signal(signal);
  ::waitpid(process_, nullptr, 0);
  process_ = -1;
}

}  // namespace test_support
