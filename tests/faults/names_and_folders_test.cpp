// Files that are no files, that may not be read, and that have names that no person gives.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/support/nobody.h"

namespace faults {
namespace {

namespace fs = std::filesystem;

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using test_support::Nobody;
using testing::HasSubstr;
using testing::Not;

class StrangeFiles : public testing::Test {
 protected:
  StrangeFiles() {
    files_.AddSong("1", "Waltz", 1);
    files_.AddSong("2", "Polka", 1);
  }
  Ended Render() { return Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav"), "--song", "2"}); }
  // The check tells of song 1, and song 2 plays.
  void ExpectOnlyTheFirstIsLost(const std::string& file, const std::string& words) {
    const Ended check = Orbel({"check", files_.Show()});
    EXPECT_EQ(check.status, 5);
    EXPECT_THAT(check.out, HasSubstr(file));
    EXPECT_THAT(check.out, HasSubstr(words));
    const Ended run = Render();
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_THAT(run.messages, HasSubstr(file));
    EXPECT_EQ(host_tests::ReadFloatWav(files_.Beside("out.wav")).size(), ShowFiles::kRate);
  }
  void PutAFolderAt(const std::string& path) const {
    fs::remove(files_.At(path));
    fs::create_directory(files_.At(path));
  }
  ShowFiles files_;
};

TEST_F(StrangeFiles, FolderInsteadOfAudio) {
  PutAFolderAt("data/1 Waltz.obd");
  ExpectOnlyTheFirstIsLost("data/1 Waltz.obd", "this is a folder");
}

TEST_F(StrangeFiles, FolderInsteadOfMidi) {
  PutAFolderAt("songs/1 Waltz.mid");
  ExpectOnlyTheFirstIsLost("songs/1 Waltz.mid", "is no regular file");
}

TEST_F(StrangeFiles, FolderInsteadOfCues) {
  PutAFolderAt("songs/1 Waltz.toml");
  ExpectOnlyTheFirstIsLost("songs/1 Waltz.toml", "is no regular file");
}

TEST_F(StrangeFiles, LinksThatLeadInACircle) {
  for (const char* file : {"data/1 Waltz.obd", "songs/1 Waltz.mid"}) {
    const fs::path path = files_.At(file);
    fs::rename(path, files_.Beside("kept"));
    fs::create_symlink(path, path);
    ExpectOnlyTheFirstIsLost(file, "Too many levels of symbolic links");
    fs::rename(files_.Beside("kept"), path);
  }
}

TEST_F(StrangeFiles, LinkToADeviceThatNeverEnds) {
  fs::remove(files_.At("data/1 Waltz.obd"));
  fs::create_symlink("/dev/zero", files_.At("data/1 Waltz.obd"));
  ExpectOnlyTheFirstIsLost("data/1 Waltz.obd", "this is a device");
}

TEST_F(StrangeFiles, PipeInsteadOfMidi) {
  fs::remove(files_.At("songs/1 Waltz.mid"));
  ASSERT_EQ(::mkfifo(files_.At("songs/1 Waltz.mid").c_str(), 0600), 0);
  ExpectOnlyTheFirstIsLost("songs/1 Waltz.mid", "is no regular file");
}

TEST_F(StrangeFiles, FilesThatMayNotBeRead) {
  fs::permissions(files_.Show() + "/..", fs::perms::all);
  fs::permissions(files_.At("data/1 Waltz.obd"), fs::perms::none);
  {
    const Nobody nobody;
    ExpectOnlyTheFirstIsLost("data/1 Waltz.obd", "Permission denied");
    fs::remove(files_.Beside("out.wav"));
  }
  fs::permissions(files_.At("data/1 Waltz.obd"), fs::perms::all);
  fs::permissions(files_.At("songs/1 Waltz.mid"), fs::perms::none);
  const Nobody nobody;
  ExpectOnlyTheFirstIsLost("songs/1 Waltz.mid", "Permission denied");
}

TEST_F(StrangeFiles, FolderThatMayNotBeRead) {
  fs::permissions(files_.At("data"), fs::perms::none);
  const Nobody nobody;
  for (const char* verb : {"check", "play", "info"}) {
    const Ended run = Orbel({verb, files_.Show()});
    EXPECT_THAT(run.status, testing::AnyOf(0, 1, 5)) << verb;
    EXPECT_THAT(run.messages + run.out, HasSubstr("data")) << verb;
    EXPECT_THAT(run.messages + run.out, Not(HasSubstr("terminate"))) << verb;
  }
}

TEST_F(StrangeFiles, NamesThatAreNoTextOrCommandATerminalPlayAndAreShownEscaped) {
  const std::string longName(255 - std::string("13 .mid").size(), 'n');
  const std::vector<std::string> names{"\xFF\xFE", "Bell\x07\x1B[2J", "Two\nlines", longName};
  int number = 10;
  for (const std::string& name : names) files_.AddSong(std::to_string(number++), name, 1);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"info", files_.Show()},
        {"check", files_.Show()},
        {"info", files_.Show(), "--json"},
        {"check", files_.Show(), "--json"},
        {"render", files_.Show(), "-o", files_.Beside("out.wav"), "--song", "11"}}) {
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 0) << arguments[0] << run.out << run.messages;
    for (const std::string& text : {run.out, run.messages}) {
      EXPECT_EQ(text.find_first_of("\x07\x1B"), std::string::npos) << arguments[0];
      EXPECT_THAT(text, Not(HasSubstr("\xFF")));
      EXPECT_THAT(text, Not(HasSubstr("Two\nlines")));
    }
  }
}

TEST_F(StrangeFiles, TheLongestNameOfAFileIsRenderedInto) {
  const std::string name = std::string(251, 'n') + ".wav";
  for (int time = 0; time < 2; ++time) {
    const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside(name), "--song", "2"});
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_EQ(host_tests::ReadFloatWav(files_.Beside(name)).size(), ShowFiles::kRate);
  }
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("n" + name), "--song", "2"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("File name too long"));
  for (const auto& entry : fs::directory_iterator(fs::path(files_.Show()).parent_path())) {
    EXPECT_NE(entry.path().extension(), ".part");
  }
}

}  // namespace
}  // namespace faults
