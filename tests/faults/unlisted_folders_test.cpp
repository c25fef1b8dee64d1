// Folders that the system does not list, and why.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using testing::HasSubstr;

struct Unlisted {
  const char* name;
  int reason;
  const char* words;
};

void PrintTo(const Unlisted& unlisted, std::ostream* out) {
  *out << unlisted.name;
}

class FolderThatCannotBeListed : public testing::TestWithParam<Unlisted> {
 protected:
  Environment Refused(const std::string& folder) const {
    return Refusing({{"ORBEL_REFUSE_FOLDER", "/show/" + folder + ":" + std::to_string(GetParam().reason)}});
  }
};

TEST_P(FolderThatCannotBeListed, AmongRecordingsIsToldInTheSystemsWords) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Environment refused = Refused("data");
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_EQ(check.out,
            std::string("error: data: cannot be read: ") + GetParam().words + "\n1 error, no warnings\n");
  const Ended play = Orbel({"play", files.Show(), "--output", "null"});
  EXPECT_EQ(play.status, 1);
  EXPECT_THAT(play.messages,
              HasSubstr("orbel: " + files.Show() + ": data: cannot be read: " + GetParam().words + "\n"));
}

TEST_P(FolderThatCannotBeListed, AmongSongsIsToldInTheSystemsWords) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  const Environment refused = Refused("songs");
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_EQ(check.out, "error: songs: Unable to list folder \"" + files.At("songs").string() +
                           "\": " + GetParam().words + ".\n1 error, no warnings\n");
}

const auto kReasonName = [](const testing::TestParamInfo<Unlisted>& info) {
  return std::string(info.param.name);
};
INSTANTIATE_TEST_SUITE_P(Reasons, FolderThatCannotBeListed,
                         testing::Values(Unlisted{"DiskThatFails", EIO, "Input/output error"},
                                         Unlisted{"NoMemory", ENOMEM, "Cannot allocate memory"},
                                         Unlisted{"TooManyOpenFiles", EMFILE, "Too many open files"}),
                         kReasonName);

// Rights that are refused otherwise than by the folder's mode, as by a policy of the system's.
TEST(FolderOfRecordings, ThatMayNotBeReadIsToldWithItsCureWhicheverWayItIsRefused) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  for (const int reason : {EACCES, EPERM}) {
    const Environment refused = Refusing({{"ORBEL_REFUSE_FOLDER", "/show/data:" + std::to_string(reason)}});
    EXPECT_EQ(Orbel({"check", files.Show()}).out,
              "error: data: may not be read by this user; give the rights to read and enter it: chmod a+rx\n"
              "1 error, no warnings\n");
  }
}

}  // namespace
}  // namespace faults
