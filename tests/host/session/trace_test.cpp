#include "host/session/trace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/session/failure.h"

namespace orbel::host {
namespace {

std::string Content(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

class TraceFile : public testing::Test {
 protected:
  TraceFile() { std::filesystem::create_directories(folder_); }
  ~TraceFile() override { std::filesystem::remove_all(folder_); }
  std::string WhyNot() const {
    try {
      Trace(path_).Commit();
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "written";
  }
  const std::filesystem::path folder_ =
      std::filesystem::path(testing::TempDir()) / ("orbel_trace_" + std::to_string(::getpid()));
  const std::string path_ = folder_ / "trace.csv";
};

TEST_F(TraceFile, HasOneRowARead) {
  {
    Trace trace(path_);
    trace.Write({0, "1", 0, 256, 0, 5, 1.0, 0, ""});
    trace.Write({256, "1", 22050, 256, 480, 485, 0.95, -2, "jump"});
    EXPECT_FALSE(std::filesystem::exists(path_)) << "before it is complete";
    trace.Commit();
  }
  EXPECT_EQ(Content(path_),
            "output_frame,song,sample,frames,tick,next_tick,scale,transposition,event\n"
            "0,1,0,256,0,5,1,0,\n"
            "256,1,22050,256,480,485,0.95,-2,jump\n");
}

TEST_F(TraceFile, QuotesASongNumberWithACommaOrAQuotationMark) {
  Trace trace(path_);
  trace.Write({0, "1,5", 0, 1, 0, 0, 1.0, 0, ""});
  trace.Write({0, "a\"b", 0, 1, 0, 0, 1.0, 0, ""});
  trace.Commit();
  EXPECT_NE(Content(path_).find("\n0,\"1,5\",0"), std::string::npos);
  EXPECT_NE(Content(path_).find("\n0,\"a\"\"b\",0"), std::string::npos);
}

TEST_F(TraceFile, LeavesNothingBehindWhenItIsNotCompleted) {
  { Trace trace(path_); }
  EXPECT_TRUE(std::filesystem::is_empty(folder_));
}

TEST_F(TraceFile, WithoutAPathWritesNothing) {
  Trace trace("");
  trace.Write({});
  trace.Commit();
  EXPECT_TRUE(std::filesystem::is_empty(folder_));
}

TEST_F(TraceFile, AFolderThatIsNotThereIsAnErrorThatNamesTheFile) {
  try {
    Trace trace(folder_ / "no" / "trace.csv");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(std::string(failure.what()),
              (folder_ / "no" / "trace.csv").string() +
                  ": cannot be written: No such file or directory. Choose another place, or make room.");
  }
}

TEST_F(TraceFile, ALinkStaysALink) {
  const std::filesystem::path target = folder_ / "target.csv";
  std::ofstream(target) << "before";
  std::filesystem::create_symlink(target, path_);
  Trace(path_).Commit();
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  std::string line;
  std::getline(std::ifstream(target), line);
  EXPECT_EQ(line, "output_frame,song,sample,frames,tick,next_tick,scale,transposition,event");
}

TEST_F(TraceFile, ADeviceTakesTheRowsAndStays) {
  std::filesystem::create_symlink("/dev/null", path_);
  Trace(path_).Commit();
  EXPECT_TRUE(std::filesystem::is_character_file(path_));
  std::filesystem::remove(path_);
  EXPECT_TRUE(std::filesystem::is_empty(folder_));
}

TEST_F(TraceFile, AFullDiskIsAnErrorAtOnce) {
  // A device on which every write fails.
  std::filesystem::create_symlink("/dev/full", path_);
  EXPECT_EQ(WhyNot(),
            path_ + ": cannot be written: No space left on device. Choose another place, or make room.");
}

TEST_F(TraceFile, OfTwoThatWriteOneNameTheSecondIsTold) {
  Trace first(path_);
  first.Write({0, "1", 0, 256, 0, 5, 1.0, 0, ""});
  EXPECT_EQ(WhyNot(),
            path_ +
                ": cannot be written: it is being written by another program; wait until that has ended, or "
                "choose another name.");
  first.Commit();
  EXPECT_NE(Content(path_).find("\n0,1,0,256"), std::string::npos);
}

TEST_F(TraceFile, IsNotWrittenThroughALinkOfItsPartsName) {
  std::ofstream(folder_ / "precious") << "precious";
  std::filesystem::create_symlink(folder_ / "precious", path_ + ".part");
  EXPECT_NE(WhyNot().find(".part, as it is called until it is complete, is a link; remove that"),
            std::string::npos);
  EXPECT_EQ(Content(folder_ / "precious"), "precious");
}

TEST_F(TraceFile, IntoAPipeThatNobodyReadsIsAnErrorAtOnce) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(WhyNot(),
            path_ +
                ": cannot be written: it is a pipe that nobody reads. Start its reader first, or give "
                "another name.");
}

TEST_F(TraceFile, IntoAPipeComesRowByRow) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  const int reader = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  Trace trace(path_);
  trace.Write({0, "1", 0, 256, 0, 5, 1.0, 0, ""});
  char bytes[1000];
  const ssize_t count = ::read(reader, bytes, sizeof bytes);
  ASSERT_GT(count, 0);
  EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(count)),
            "output_frame,song,sample,frames,tick,next_tick,scale,transposition,event\n0,1,0,256,0,5,1,0,\n");
  trace.Commit();
  EXPECT_EQ(::read(reader, bytes, sizeof bytes), 0) << "and its end after it";
  ::close(reader);
}

TEST_F(TraceFile, LongerThanWhatIsGatheredHasEveryRow) {
  constexpr int kRows = 10'000;
  Trace trace(path_);
  for (int row = 0; row < kRows; ++row) trace.Write({row, "1", 0, 256, 0, 5, 1.0, 0, ""});
  trace.Commit();
  const std::string content = Content(path_);
  EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), kRows + 1);
}

}  // namespace
}  // namespace orbel::host
