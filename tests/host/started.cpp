#include "tests/host/started.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

namespace host_tests {

Started::Started(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  process_ = ::fork();
  if (process_ != 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  const int silence = ::open("/dev/null", O_RDWR);
  for (int stream = 0; stream < 3; ++stream) ::dup2(silence, stream);
  ::execvp(argv[0], argv.data());
  ::_exit(127);
}

Started::~Started() {
  End(SIGTERM);
}

void Started::Signal(int signal) const {
  if (process_ > 0) ::kill(process_, signal);
}

void Started::End(int signal) {
  if (process_ <= 0) return;
  Signal(signal);
  Signal(SIGCONT);
  Wait();
}

bool Started::Wait() {
  int status = -1;
  ::waitpid(std::exchange(process_, -1), &status, 0);
  return status == 0;
}

}  // namespace host_tests
