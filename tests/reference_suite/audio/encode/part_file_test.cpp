#include "reference_suite/audio/encode/part_file.h"
#include "reference_suite/audio/encode/sound_file_error.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/reference_suite/audio/support/sound_files.h"

namespace tesk_audio {
namespace {

namespace fs = std::filesystem;

std::string WhyNot(const std::string& path) {
  try {
    PartFile file(path);
    file.Commit();
  } catch (const SoundFileError& error) {
    return error.what();
  }
  return "";
}

struct Part : testing::Test {
  sound_files::TemporaryFolder folder;
  const std::string path = folder.Path("out");
};

TEST_F(Part, ReadsBackWhatItWroteAndKnowsItsLength) {
  PartFile file(path);
  EXPECT_EQ(file.Write("abcdef", 6), 6);
  EXPECT_EQ(file.GetLength(), 6);
  EXPECT_EQ(file.Seek(2, SEEK_SET), 2);
  char bytes[8] = {};
  EXPECT_EQ(file.Read(bytes, 8), 4) << "no more than there is";
  EXPECT_STREQ(bytes, "cdef");
  file.Commit();
  EXPECT_EQ(sound_files::Bytes(path), "abcdef");
  EXPECT_FALSE(fs::exists(path + ".part"));
}

TEST_F(Part, ALinkStaysALink) {
  const std::string target = folder.Path("target");
  sound_files::WriteBytes(target, "before");
  fs::create_symlink(target, path);
  PartFile file(path);
  file.Write("after", 5);
  EXPECT_EQ(sound_files::Bytes(target), "before");
  file.Commit();
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_EQ(sound_files::Bytes(target), "after");
}

TEST_F(Part, AFolderAndADeviceAreRefusedAtOnce) {
  fs::create_directory(path);
  EXPECT_EQ(WhyNot(path), path + ": cannot be written: there is a folder of that name. Choose another name.");
  EXPECT_EQ(WhyNot("/dev/null"),
            "/dev/null: cannot be written: there is a device or a pipe of that name. Choose another name.");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_FALSE(fs::exists("/dev/null.part"));
}

TEST_F(Part, ANameThatIsTakenByAFolderInTheMeantimeIsAnErrorThatLeavesNothing) {
  {
    PartFile file(path);
    fs::create_directory(path);
    try {
      file.Commit();
      FAIL();
    } catch (const SoundFileError& error) {
      EXPECT_EQ(error.what(),
                path + ": cannot be written: Is a directory. Choose another place, or make room.");
    }
  }
  EXPECT_FALSE(fs::exists(path + ".part"));
}

TEST_F(Part, OfTwoWhoWriteOneNameTheSecondIsToldAndTheFirstIsWhole) {
  PartFile file(path);
  file.Write("first", 5);
  EXPECT_EQ(WhyNot(path),
            path +
                ": cannot be written: it is being written by another program; wait until that has "
                "ended, or choose another name.");
  file.Commit();
  EXPECT_EQ(sound_files::Bytes(path), "first");
}

TEST_F(Part, ALinkInThePlaceOfThePartIsNotWrittenThrough) {
  const std::string precious = folder.Path("precious");
  sound_files::WriteBytes(precious, "before");
  fs::create_symlink(precious, path + ".part");
  EXPECT_EQ(WhyNot(path),
            path + ": cannot be written: " + path +
                ".part, as it is called until it is complete, is a link; remove that, or choose "
                "another name.");
  EXPECT_EQ(sound_files::Bytes(precious), "before");
}

TEST_F(Part, NamesAreShownSoThatTheyCanForgeNothing) {
  const std::string name = folder.Path("no/\xff\n");
  EXPECT_EQ(WhyNot(name), folder.Path("no/\\xff\\x0a") +
                              ": cannot be written: No such file or directory. Choose another place, or make "
                              "room.");
}

}  // namespace
}  // namespace tesk_audio
