#include "exc/file/unfinished_file.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include "exc/file/unfinished_file_error.h"
#include "tests/support/temporary_folder.h"

namespace {

// What another program may do meanwhile.
std::function<void()> beforeItIsLocked;

bool closingFails = false;

}  // namespace

// In front of the system's, by --wrap.
extern "C" {

int __real_flock(int file, int operation);
int __real_close(int file);

int __wrap_flock(int file, int operation);
int __wrap_flock(int file, int operation) {
  if (beforeItIsLocked) beforeItIsLocked();
  return __real_flock(file, operation);
}

int __wrap_close(int file);
int __wrap_close(int file) {
  const int result = __real_close(file);
  if (!closingFails) return result;
  errno = ENOSPC;
  return -1;
}

}  // extern "C"

namespace exc {
namespace {

namespace fs = std::filesystem;

std::string Content(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

void Put(const UnfinishedFile& file, const std::string& text) {
  ASSERT_EQ(::write(file.GetDescriptor(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

struct Unfinished : testing::Test {
  // The text of the error, and its code behind it when there is one.
  std::string WhyNot(const std::function<void()>& deed) const {
    try {
      deed();
    } catch (const UnfinishedFileError& error) {
      return error.what() + (error.GetCode() == 0 ? "" : " " + std::to_string(error.GetCode()));
    }
    return "done";
  }
  std::string WhyNotWritten() const {
    return WhyNot([this] {
      UnfinishedFile file(path);
      Put(file, "ours");
      file.Commit();
    });
  }
  std::string Foreign(const std::string& what) const {
    return part + ", as it is called until it is complete, is " + what +
           "; remove that, or choose another name";
  }

  test_support::TemporaryFolder folder;
  const std::string path = folder.Path("out");
  const std::string part = path + ".part";
};

TEST_F(Unfinished, HasItsNameWhenItIsComplete) {
  std::ofstream(path) << "before";
  UnfinishedFile file(path);
  Put(file, "after");
  EXPECT_EQ(Content(path), "before");
  EXPECT_EQ(Content(part), "after");
  file.Commit();
  EXPECT_EQ(Content(path), "after");
  EXPECT_FALSE(fs::exists(part));
}

TEST_F(Unfinished, IsGoneWhenItIsNotCompleted) {
  { Put(UnfinishedFile(path), "half"); }
  EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST_F(Unfinished, IsWrittenByOneAtATime) {
  auto first = std::make_unique<UnfinishedFile>(path);
  Put(*first, "first");
  EXPECT_EQ(WhyNotWritten(),
            "it is being written by another program; wait until that has ended, or choose another name");
  EXPECT_EQ(Content(part), "first");
  first->Commit();
  EXPECT_EQ(Content(path), "first");
  EXPECT_EQ(WhyNotWritten(), "done") << "it is locked for nobody any more";
  EXPECT_EQ(Content(path), "ours");
}

TEST_F(Unfinished, OfAProgramThatWasKilledIsWrittenOver) {
  std::ofstream(part) << "much longer than what comes";
  EXPECT_EQ(WhyNotWritten(), "done");
  EXPECT_EQ(Content(path), "ours");
}

TEST_F(Unfinished, IsNotWrittenThroughALink) {
  std::ofstream(folder.Path("precious")) << "precious";
  fs::create_symlink(folder.Path("precious"), part);
  EXPECT_EQ(WhyNotWritten(), Foreign("a link"));
  EXPECT_EQ(Content(folder.Path("precious")), "precious");
  EXPECT_TRUE(fs::is_symlink(part));
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(Unfinished, IsNotWrittenThroughALinkThatLeadsNowhere) {
  fs::create_symlink(folder.Path("new"), part);
  EXPECT_EQ(WhyNotWritten(), Foreign("a link"));
  EXPECT_FALSE(fs::exists(folder.Path("new")));
}

TEST_F(Unfinished, IsNotWrittenIntoAFileWithAnotherName) {
  std::ofstream(folder.Path("precious")) << "precious";
  fs::create_hard_link(folder.Path("precious"), part);
  EXPECT_EQ(WhyNotWritten(), Foreign("a file that has another name too"));
  EXPECT_EQ(Content(folder.Path("precious")), "precious");
}

TEST_F(Unfinished, IsNoPipeAndNoFolder) {
  ASSERT_EQ(::mkfifo(part.c_str(), 0600), 0);
  EXPECT_EQ(WhyNotWritten(), Foreign("a pipe or a device"));
  EXPECT_TRUE(fs::is_fifo(part));
  fs::remove(part);
  fs::create_directory(part);
  EXPECT_EQ(WhyNotWritten(), Foreign("a folder"));
}

TEST_F(Unfinished, LeavesALinkThatIsItsName) {
  std::ofstream(folder.Path("target")) << "before";
  fs::create_symlink("target", path);
  EXPECT_EQ(WhyNotWritten(), "done");
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_EQ(Content(folder.Path("target")), "ours");
}

TEST_F(Unfinished, LeavesALinkThatLeadsToNothingYet) {
  fs::create_directory(folder.Path("shelf"));
  fs::create_symlink("second", folder.Path("shelf/first"));
  fs::create_symlink("shelf/first", path);
  EXPECT_EQ(WhyNotWritten(), "done");
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_TRUE(fs::is_symlink(folder.Path("shelf/first")));
  EXPECT_EQ(Content(folder.Path("shelf/second")), "ours");
}

TEST_F(Unfinished, IsNoCircleOfLinks) {
  fs::create_symlink("out", path);
  EXPECT_EQ(WhyNotWritten(), "Too many levels of symbolic links " + std::to_string(ELOOP));
  EXPECT_TRUE(fs::is_symlink(path));
}

// A program that runs until it is let go of.
class Running {
 public:
  explicit Running(const std::string& program) {
    EXPECT_EQ(::pipe(input_.data()), 0);
    posix_spawn_file_actions_t streams;
    ::posix_spawn_file_actions_init(&streams);
    ::posix_spawn_file_actions_adddup2(&streams, input_[0], STDIN_FILENO);
    ::posix_spawn_file_actions_addclose(&streams, input_[1]);
    std::string name = program;
    std::array<char*, 2> arguments{name.data(), nullptr};
    EXPECT_EQ(::posix_spawn(&process_, name.c_str(), &streams, nullptr, arguments.data(), environ), 0);
    ::posix_spawn_file_actions_destroy(&streams);
  }
  ~Running() {
    ::close(input_[0]);
    ::close(input_[1]);
    ::waitpid(process_, nullptr, 0);
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  std::array<int, 2> input_{-1, -1};
  pid_t process_ = -1;
};

// Nobody may write into a program that runs, not even who may do everything.
TEST_F(Unfinished, SaysWhyWhatIsThereCannotBeOpened) {
  fs::copy_file("/bin/cat", part);
  const Running program(part);
  EXPECT_EQ(WhyNotWritten(),
            part +
                " cannot be opened (Text file busy), as it is called until it is complete; remove that, or "
                "choose another name");
  EXPECT_GT(fs::file_size(part), 0U);
}

// Some file systems find out when they are done with it.
TEST_F(Unfinished, ThatFoundNoPlaceInTheEndTakesNoName) {
  {
    UnfinishedFile file(path);
    closingFails = true;
    const std::string why = WhyNot([&] { file.Commit(); });
    closingFails = false;
    EXPECT_EQ(why, "No space left on device " + std::to_string(ENOSPC));
  }
  EXPECT_FALSE(fs::exists(path));
  EXPECT_FALSE(fs::exists(part));
}

TEST_F(Unfinished, WhoseNameIsTakenEveryTimeGivesUp) {
  std::ofstream(folder.Path("theirs")) << "theirs";
  int taken = 0;
  beforeItIsLocked = [&] {
    ++taken;
    fs::copy_file(folder.Path("theirs"), folder.Path("next"));
    fs::rename(folder.Path("next"), part);
  };
  const std::string why = WhyNotWritten();
  beforeItIsLocked = nullptr;
  EXPECT_EQ(why, "other programs keep taking its name; choose another name");
  EXPECT_EQ(taken, 100);
  EXPECT_EQ(Content(part), "theirs");
}

TEST_F(Unfinished, ThatSomebodyReplacedTakesNoName) {
  {
    UnfinishedFile file(path);
    fs::remove(part);
    std::ofstream(part) << "theirs";
    EXPECT_EQ(
        WhyNot([&] { file.Commit(); }),
        part + ", as it is called until it is complete, was replaced or removed meanwhile; write it again");
  }
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(Content(part), "theirs");
}

TEST_F(Unfinished, SaysWhatTheSystemSays) {
  EXPECT_EQ(WhyNot([&] { UnfinishedFile(folder.Path("no/out")); }),
            "No such file or directory " + std::to_string(ENOENT));
  {
    UnfinishedFile file(path);
    fs::create_directory(path);
    EXPECT_EQ(WhyNot([&] { file.Commit(); }), "Is a directory " + std::to_string(EISDIR));
  }
  EXPECT_FALSE(fs::exists(part));
}

TEST_F(Unfinished, OfALongNameIsCalledByAsMuchOfItAsFits) {
  const std::string longest = folder.Path(std::string(255, 'n'));
  EXPECT_EQ(UnfinishedFile::PartNameOf(longest), folder.Path((std::string(250, 'n') + ".part")));
  // A name that looks like that is another one's, or its own.
  const std::string itself = folder.Path(std::string(250, 'n') + ".part");
  EXPECT_EQ(UnfinishedFile::PartNameOf(itself), folder.Path(std::string(249, 'n') + ".part"));
  UnfinishedFile(longest).Commit();
  EXPECT_TRUE(fs::exists(longest));
}

// Whoever is not refused has written all of the file, whatever the others are doing.
TEST_F(Unfinished, OfManyIsAlwaysWhole) {
  constexpr int kTimes = 200;
  std::atomic<int> done{0};
  std::atomic<int> spoilt{0};
  const auto write = [&](char letter) {
    for (int time = 0; time < kTimes; ++time) {
      try {
        UnfinishedFile file(path);
        for (int piece = 0; piece < 4; ++piece) Put(file, std::string(64, letter));
        file.Commit();
        ++done;
      } catch (const UnfinishedFileError&) {
        continue;
      }
      const std::string content = Content(path);
      if (content != std::string(256, content.empty() ? ' ' : content.front())) ++spoilt;
    }
  };
  std::vector<std::thread> writers;
  for (const char letter : {'a', 'b', 'c', 'd'}) writers.emplace_back(write, letter);
  for (std::thread& writer : writers) writer.join();
  EXPECT_GT(done, 0);
  EXPECT_EQ(spoilt, 0);
  EXPECT_FALSE(fs::exists(part));
}

}  // namespace
}  // namespace exc
