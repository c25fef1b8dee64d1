#include "reference_suite/midi/show_folder/read_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/reference_suite/midi/show_folder/show_on_disk.h"
#include "tests/reference_suite/midi/standard_midi_file/file_calls.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_midi::FileError;
using tesk_midi::ReadRegularFile;
using test_support::ThrowsWithText;

class ReadFileTest : public testing::Test {
 protected:
  std::string At(const std::string& name) const { return (show_.Path() / name).string(); }
  testing::AssertionResult Refused(const std::string& name, const std::string& text) const {
    return ThrowsWithText<FileError>([&] { ReadRegularFile(At(name), 1000); }, text);
  }

  made_show::ShowOnDisk show_;
};

TEST_F(ReadFileTest, GivesEveryByte) {
  const std::string bytes("a\0b\xff\r\n", 6);
  show_.Write("file", bytes);
  EXPECT_EQ(ReadRegularFile(At("file"), 1000), bytes);
  show_.Write("empty", "");
  EXPECT_EQ(ReadRegularFile(At("empty"), 1000), "");
}

TEST_F(ReadFileTest, LargeFilesComeWhole) {
  std::string bytes;
  for (int i = 0; i < 300'000; ++i) bytes += static_cast<char>(i % 251);
  show_.Write("file", bytes);
  EXPECT_EQ(ReadRegularFile(At("file"), 300'000), bytes);
}

TEST_F(ReadFileTest, OneByteMoreThanTheLimitTellsThatThereIsMore) {
  show_.Write("file", std::string(1001, 'x'));
  EXPECT_EQ(ReadRegularFile(At("file"), 1001).size(), 1001u);
  EXPECT_EQ(ReadRegularFile(At("file"), 1000).size(), 1001u);
  EXPECT_EQ(ReadRegularFile(At("file"), 10).size(), 11u);
}

TEST_F(ReadFileTest, InterruptedReadsGoOn) {
  show_.Write("file", "text");
  file_calls::interruptedReads = 3;
  EXPECT_EQ(ReadRegularFile(At("file"), 1000), "text");
  EXPECT_EQ(file_calls::interruptedReads, 0);
}

TEST_F(ReadFileTest, LinkToAFileIsRead) {
  show_.Write("file", "text");
  std::filesystem::create_symlink("file", At("link"));
  EXPECT_EQ(ReadRegularFile(At("link"), 1000), "text");
}

TEST_F(ReadFileTest, MissingFile) {
  EXPECT_TRUE(Refused("none",
                      "cannot be opened (No such file or directory); see that the file is there and that it "
                      "may be read."));
}

TEST_F(ReadFileTest, LinkLoop) {
  std::filesystem::create_symlink("b", At("a"));
  std::filesystem::create_symlink("a", At("b"));
  EXPECT_TRUE(Refused("a",
                      "cannot be opened (Too many levels of symbolic links); "
                      "replace the link, which leads in a circle, by the file itself."));
}

TEST_F(ReadFileTest, FolderPipeAndDeviceAreRefusedWithoutReading) {
  const char kText[] = "is no regular file; put a file of that name there.";
  std::filesystem::create_directory(At("folder"));
  ASSERT_EQ(::mkfifo(At("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", At("device"));
  file_calls::readCount = 0;
  EXPECT_TRUE(Refused("folder", kText));
  EXPECT_TRUE(Refused("pipe", kText));
  EXPECT_TRUE(Refused("device", kText));
  EXPECT_EQ(file_calls::readCount, 0);
}

TEST_F(ReadFileTest, FileWhoseKindCannotBeToldIsRefused) {
  show_.Write("file", "text");
  file_calls::failStatus = true;
  EXPECT_TRUE(
      Refused("file",
              "cannot be examined (Value too large for defined data type); see that the file is there "
              "and that it may be read."));
  file_calls::failStatus = false;
}

TEST_F(ReadFileTest, FileThatFailsWhileItIsRead) {
  // A regular file whose first byte the system does not give.
  std::filesystem::create_symlink("/proc/self/mem", At("file"));
  EXPECT_TRUE(Refused("file",
                      "cannot be read (Input/output error); see that the file is there and that it may be "
                      "read."));
}

TEST_F(ReadFileTest, NothingStaysOpen) {
  const auto openFiles = [] {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
  };
  std::filesystem::create_directory(At("folder"));
  show_.Write("file", "text");
  const auto before = openFiles();
  ReadRegularFile(At("file"), 1000);
  EXPECT_THROW(ReadRegularFile(At("folder"), 1000), FileError);
  EXPECT_THROW(ReadRegularFile(At("none"), 1000), FileError);
  EXPECT_EQ(openFiles(), before);
}

}  // namespace
