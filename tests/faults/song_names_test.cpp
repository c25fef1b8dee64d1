// Names and numbers of songs that are written in odd ways.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ShowFiles;
using testing::HasSubstr;

class NamesThatAreNoText : public testing::TestWithParam<const char*> {};

TEST_P(NamesThatAreNoText, AreComparedWithTheirOwnSong) {
  ShowFiles files;
  files.AddSong("3", GetParam(), 1, "[[caesura]]\nat = \"1.2\"\n");
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_EQ(check.out, "no errors, no warnings\n");
  EXPECT_EQ(check.status, 0);
}

TEST_P(NamesThatAreNoText, AreStillToldFromOtherNames) {
  ShowFiles files;
  files.AddSong("3", GetParam(), 1);
  std::filesystem::rename(files.At(std::string("data/3 ") + GetParam() + ".obd"),
                          files.At("data/3 \xfd.obd"));
  const Ended check = Orbel({"check", files.Show()});
  EXPECT_THAT(check.out, HasSubstr("warning: data/3 \\xfd.obd: is taken for song 3 because of its number, "
                                   "though that song is called otherwise: \"songs/3 "));
  EXPECT_EQ(check.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Names, NamesThatAreNoText,
                         testing::Values("\xff\xfe", "W\xe4lzer", "Wal\ntzer", "\x1b[2J",
                                         "Wal\xe2\x80\x8btzer", "W\xc3\xa4lzer"));

class NumbersWithZeros : public testing::Test {
 protected:
  NumbersWithZeros() { files_.AddSong("1", "Waltz", 1); }
  void ExpectTold(const std::string& words) {
    const Ended check = Orbel({"check", files_.Show()});
    EXPECT_EQ(check.status, 5);
    EXPECT_THAT(check.out, HasSubstr("error: " + words + "\n"));
    EXPECT_THAT(check.out, testing::Not(HasSubstr("add \"songs/")));
    const Ended play = Orbel({"play", files_.Show(), "--output", "null"});
    EXPECT_EQ(play.status, 1);
    EXPECT_THAT(play.messages, HasSubstr(words));
  }
  ShowFiles files_;
};

TEST_F(NumbersWithZeros, OfAudioAreThoseOfTheSongThatIsMeant) {
  std::filesystem::rename(files_.At("data/1 Waltz.obd"), files_.At("data/01 Waltz.obd"));
  ExpectTold(
      "data/01 Waltz.obd: there is no song 01, only a song 1, so the show cannot be opened; rename this file "
      "to \"1 Waltz.obd\", or take it out");
  std::filesystem::rename(files_.At("data/01 Waltz.obd"), files_.At("data/1 Waltz.obd"));
  EXPECT_EQ(Orbel({"check", files_.Show()}).out, "no errors, no warnings\n");
}

TEST_F(NumbersWithZeros, OfAudioTakeNothingFromASongThatHasItsRecording) {
  files_.Write("data/01 Waltz.obd", "an old one");
  ExpectTold(
      "data/01 Waltz.obd: there is no song 01, only a song 1, whose recording is \"data/1 Waltz.obd\", so "
      "the show cannot be opened; take this file out");
  std::filesystem::remove(files_.At("data/01 Waltz.obd"));
  EXPECT_EQ(Orbel({"check", files_.Show()}).out, "no errors, no warnings\n");
}

}  // namespace
}  // namespace faults
