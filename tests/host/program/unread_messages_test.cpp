// Standard error that takes no more, because nobody reads at its other end.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/host/show_files.h"
#include "tests/support/wait_until.h"

namespace host_tests {
namespace {

using test_support::WaitUntil;

void SetWaits(int file, bool waits) {
  const int flags = ::fcntl(file, F_GETFL);
  ::fcntl(file, F_SETFL, waits ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
}

// A pipe that is full, or a terminal that is stopped, as by Control-S: that one which was filled may have
// room again, because the system moves what is in it on when it likes. `written` is the program's end.
struct Full {
  enum class Kind { Pipe, Terminal };
  explicit Full(Kind kind) {
    int ends[2] = {-1, -1};
    const bool made = kind == Kind::Pipe ? ::pipe(ends) == 0
                                         : ::openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) == 0 &&
                                               ::tcflow(ends[1], TCOOFF) == 0;
    if (!made) ::abort();
    read = ends[0];
    written = ends[1];
    SetWaits(read, false);
    if (kind == Kind::Pipe) Fill();
  }
  ~Full() {
    ::close(read);
    ::close(written);
  }
  Full(const Full&) = delete;
  Full& operator=(const Full&) = delete;

  void Fill() const {
    SetWaits(written, false);
    const std::string words(4096, 'x');
    for (std::size_t count = words.size(); count > 0;) {
      if (::write(written, words.data(), count) < 0) count /= 2;
    }
    SetWaits(written, true);
  }
  std::string Read() const {
    std::string text;
    char bytes[4096];
    for (ssize_t count = 0; (count = ::read(read, bytes, sizeof bytes)) > 0;)
      text.append(bytes, static_cast<std::size_t>(count));
    return text;
  }

  int read = -1;
  int written = -1;
};

class OrbelUnread {
 public:
  OrbelUnread(std::vector<std::string> words, int input, int messages, int results = STDOUT_FILENO) {
    words.insert(words.begin(), ORBEL_PROGRAM);
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    process_ = ::fork();
    if (process_ != 0) return;
    ::setsid();
    ::dup2(input, STDIN_FILENO);
    ::dup2(messages, STDERR_FILENO);
    ::dup2(results, STDOUT_FILENO);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ~OrbelUnread() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  OrbelUnread(const OrbelUnread&) = delete;
  OrbelUnread& operator=(const OrbelUnread&) = delete;

  // In the system's poll, which it calls only where there is no room.
  bool WaitsInPoll() const {
    std::ifstream call("/proc/" + std::to_string(process_) + "/syscall");
    long number = -1;
#ifdef SYS_poll
    constexpr long kPoll = SYS_poll;
#else
    constexpr long kPoll = SYS_ppoll;
#endif
    return (call >> number) && number == kPoll;
  }
  void Signal(int signal) const {
    ::kill(process_, signal);
  }
  // Its status; -1 when a signal ended it, or when it does not end.
  int WaitForEnd() {
    int status = 0;
    if (!WaitUntil([&] { return ::waitpid(process_, &status, WNOHANG) == process_; })) return -1;
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t process_ = -1;
};

class UnreadMessages : public testing::Test {
 protected:
  UnreadMessages() { files_.AddSong("1", "Waltz", 2, "[[vamp]]\nfrom = \"1.2\"\nto = \"1.3\"\n"); }

  std::vector<std::string> PlayIntoTheFile() const {
    return {"play", files_.Show(), "--output", "file", "--device", file_, "--vamp-passes", "1000000"};
  }
  bool Plays() const {
    return WaitUntil([this] {
      std::error_code none;
      const auto size = std::filesystem::file_size(file_ + ".part", none);
      return !none && size > 1000;
    });
  }

  ShowFiles files_;
  const std::string file_ = files_.Beside("take.wav");
  const int nothing_ = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
};

TEST_F(UnreadMessages, ArriveWhenThereIsRoomAgain) {
  const Full pipe(Full::Kind::Pipe);
  SetWaits(pipe.written, false);
  OrbelUnread orbel(PlayIntoTheFile(), nothing_, pipe.written);
  ASSERT_TRUE(Plays());
  std::string text = pipe.Read();
  orbel.Signal(SIGINT);
  EXPECT_TRUE(
      WaitUntil([&] { return (text += pipe.Read()).find("once more ends it") != std::string::npos; }));
  EXPECT_NE(text.find("No terminal, so nobody at the keys"), std::string::npos)
      << "said while there was no room";
  orbel.Signal(SIGINT);
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(UnreadMessages, InAPipeHoldNothingUp) {
  const Full pipe(Full::Kind::Pipe);
  OrbelUnread orbel(PlayIntoTheFile(), nothing_, pipe.written);
  ASSERT_TRUE(Plays());
  orbel.Signal(SIGTERM);
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_TRUE(std::filesystem::exists(file_));
}

TEST_F(UnreadMessages, OnATerminalHoldNothingUp) {
  const Full terminal(Full::Kind::Terminal);
  OrbelUnread orbel(PlayIntoTheFile(), terminal.written, terminal.written);
  ASSERT_EQ(::write(terminal.read, " ", 1), 1);
  ASSERT_TRUE(Plays());
  orbel.Signal(SIGTERM);
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_TRUE(std::filesystem::exists(file_));
}

// As of any program, its words wait for the reader, but not when it is to end.
TEST_F(UnreadMessages, OfARenderAreGivenUpAtAnInterrupt) {
  const Full pipe(Full::Kind::Pipe);
  OrbelUnread orbel({"render", files_.Show(), "-o", file_}, nothing_, pipe.written);
  ASSERT_TRUE(WaitUntil([this] { return std::filesystem::exists(file_); }));
  orbel.Signal(SIGINT);
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

// Nothing says when it waits; an interrupt before that ends it as well.
TEST_F(UnreadMessages, ThatAreResultsAreGivenUpAtAnInterrupt) {
  for (const auto& [kind, signal] : {std::pair(Full::Kind::Pipe, SIGINT), std::pair(Full::Kind::Pipe, SIGHUP),
                                     std::pair(Full::Kind::Terminal, SIGTERM)}) {
    SCOPED_TRACE(signal);
    const Full results(kind);
    const std::string messages = files_.Beside("messages");
    const int file = ::open(messages.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600);
    OrbelUnread orbel({"info", files_.Show()}, nothing_, file, results.written);
    ASSERT_TRUE(WaitUntil([&] { return orbel.WaitsInPoll(); }));
    orbel.Signal(signal);
    EXPECT_EQ(orbel.WaitForEnd(), 1);
    EXPECT_EQ(ReadText(messages),
              "orbel: the results could not be written to standard output; make room where they go\n");
    ::close(file);
  }
}

}  // namespace
}  // namespace host_tests
