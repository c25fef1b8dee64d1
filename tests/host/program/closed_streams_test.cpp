// The program started without some of its standard streams, as a service may be.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/host/show_files.h"
#include "tests/support/wait_until.h"

namespace host_tests {
namespace {

// Ended with this object.
class OrbelWithout {
 public:
  OrbelWithout(const std::vector<int>& streams, std::vector<std::string> words) {
    words.insert(words.begin(), ORBEL_PROGRAM);
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    process_ = ::fork();
    if (process_ != 0) return;
    for (const int stream : streams) ::close(stream);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ~OrbelWithout() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  OrbelWithout(const OrbelWithout&) = delete;
  OrbelWithout& operator=(const OrbelWithout&) = delete;

  // Under which number it has this file open; -1 when it has not.
  int NumberOf(const std::string& path) const {
    std::error_code gone;
    for (const auto& open :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process_) + "/fd", gone)) {
      if (std::filesystem::read_symlink(open.path(), gone) == path) return std::stoi(open.path().filename());
    }
    return -1;
  }

 private:
  pid_t process_ = -1;
};

class ClosedStreams : public testing::TestWithParam<std::vector<int>> {};

TEST_P(ClosedStreams, AreNotTheRecording) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2, "[[vamp]]\nfrom = \"1.2\"\nto = \"1.3\"\n");
  const std::string file = files.Beside("take.wav");
  const OrbelWithout orbel(
      GetParam(), {"play", files.Show(), "--output", "file", "--device", file, "--vamp-passes", "1000000"});
  int number = -1;
  EXPECT_TRUE(test_support::WaitUntil([&] { return (number = orbel.NumberOf(file + ".part")) >= 0; }));
  EXPECT_GT(number, STDERR_FILENO);
}

INSTANTIATE_TEST_SUITE_P(Each, ClosedStreams,
                         testing::Values(std::vector{0}, std::vector{1}, std::vector{2},
                                         std::vector{0, 1, 2}));

TEST(ClosedStream, OfResultsIsNoSuccess) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  const std::string info = std::string("'") + ORBEL_PROGRAM + "' info '" + files.Show() + "' 2>/dev/null ";
  EXPECT_EQ(std::system((info + ">/dev/null").c_str()), 0);
  const int status = std::system((info + ">&-").c_str());
  EXPECT_EQ(WEXITSTATUS(status), 1);
}

}  // namespace
}  // namespace host_tests
