#include "host/session/trace.h"

#include <gtest/gtest.h>
#include <unistd.h>

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
  // The part file of this name is a link to a device on which every write fails.
  std::filesystem::create_symlink("/dev/full", path_ + ".part");
  EXPECT_THROW(Trace(path_).Commit(), Failure);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

}  // namespace
}  // namespace orbel::host
