#include "suite/utility/listdir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

namespace {

class ListdirTest : public testing::Test {
 protected:
  ListdirTest() { folder_ = test_support::MakeTemporaryFolder(); }
  ~ListdirTest() override { fs::remove_all(folder_); }

  void Touch(const std::string& name) { std::ofstream(folder_ + "/" + name) << "x"; }

  std::string folder_;
};

}  // namespace

TEST_F(ListdirTest, AnEmptyFolderHasNoNames) {
  EXPECT_EQ(exc::listdir(folder_), Names{});
}

TEST_F(ListdirTest, NamesAreSortedByByteValue) {
  for (const char* name : {"b", "a", "B", "10 x", "2 x", "\xC3\xA4", "_"}) Touch(name);
  EXPECT_EQ(exc::listdir(folder_), (Names{"10 x", "2 x", "B", "_", "a", "b", "\xC3\xA4"}));
}

TEST_F(ListdirTest, EveryKindOfEntryIsListed) {
  Touch("file");
  fs::create_directory(folder_ + "/folder");
  fs::create_symlink("nowhere", folder_ + "/broken link");
  ASSERT_EQ(mkfifo((folder_ + "/pipe").c_str(), 0600), 0);
  EXPECT_EQ(exc::listdir(folder_), (Names{"broken link", "file", "folder", "pipe"}));
}

// What a Mac leaves on a stick beside each file, and what editors leave.
TEST_F(ListdirTest, HiddenNamesAreLeftOut) {
  for (const char* name : {"._1 Waltz.obd", ".DS_Store", "..more", "1 Waltz.obd", "1.", "_1"}) Touch(name);
  fs::create_directory(folder_ + "/.folder");
  EXPECT_EQ(exc::listdir(folder_), (Names{"1 Waltz.obd", "1.", "_1"}));
}

TEST_F(ListdirTest, NamesAreBytesAsTheyAre) {
  for (const char* name : {"\xFF\xFE.obd", "two\nlines", "\x1B[31m", "  blanks  "}) Touch(name);
  EXPECT_EQ(exc::listdir(folder_), (Names{"\x1B[31m", "  blanks  ", "two\nlines", "\xFF\xFE.obd"}));
}

TEST_F(ListdirTest, ATrailingSlashChangesNothing) {
  Touch("a");
  EXPECT_EQ(exc::listdir(folder_ + "/"), Names{"a"});
}

TEST_F(ListdirTest, AMissingFolderIsAnErrorWithItsNameAndTheReason) {
  EXPECT_TRUE(ThrowsWithText<exc::ListdirError>(
      [&] { exc::listdir(folder_ + "/none"); },
      "Unable to list folder \"" + folder_ + "/none\": No such file or directory"));
  EXPECT_TRUE(ThrowsWithText<exc::ListdirError>([] { exc::listdir(""); },
                                                "Unable to list folder \"\": No such file or directory"));
}

TEST_F(ListdirTest, AFileIsNoFolder) {
  Touch("file");
  EXPECT_TRUE(
      ThrowsWithText<exc::ListdirError>([&] { exc::listdir(folder_ + "/file"); },
                                        "Unable to list folder \"" + folder_ + "/file\": Not a directory"));
}

TEST_F(ListdirTest, ALinkThatLeadsToItselfIsAnError) {
  fs::create_symlink("loop", folder_ + "/loop");
  EXPECT_TRUE(ThrowsWithText<exc::ListdirError>(
      [&] { exc::listdir(folder_ + "/loop"); },
      "Unable to list folder \"" + folder_ + "/loop\": Too many levels of symbolic links"));
}

TEST_F(ListdirTest, ANameThatIsTooLongIsAnError) {
  const std::string folder = folder_ + "/" + std::string(300, 'x');
  EXPECT_TRUE(ThrowsWithText<exc::ListdirError>(
      [&] { exc::listdir(folder); }, "Unable to list folder \"" + folder + "\": File name too long"));
}

namespace {

// Prints the error and leaves, on behalf of a user who may read next to nothing.
[[noreturn]] void ListAsNobody(const std::string& folder) {
  constexpr uid_t kNobody = 65534;
  if (geteuid() == 0 && setuid(kNobody) != 0) std::_Exit(2);
  try {
    exc::listdir(folder);
  } catch (const exc::ListdirError& error) {
    std::cerr << error.what() << std::endl;
    std::_Exit(1);
  }
  std::_Exit(0);
}

}  // namespace

using ListdirDeathTest = ListdirTest;

TEST_F(ListdirDeathTest, AFolderThatMayNotBeReadIsAnError) {
  ASSERT_EQ(chmod(folder_.c_str(), 0), 0);
  EXPECT_EXIT(ListAsNobody(folder_), testing::ExitedWithCode(1),
              "Unable to list folder \".*\": Permission denied");
  chmod(folder_.c_str(), 0700);
}

TEST_F(ListdirTest, AnErrorKnowsTheSystemsReason) {
  try {
    exc::listdir(folder_ + "/none");
    FAIL() << "there is no such folder";
  } catch (const exc::ListdirError& error) {
    EXPECT_EQ(error.GetReason(), ENOENT);
  }
  EXPECT_EQ(exc::ListdirError("by hand").GetReason(), 0);
}

TEST(ListdirError, IsARuntimeError) {
  EXPECT_TRUE((std::is_base_of_v<std::runtime_error, exc::ListdirError>));
}
