#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <filesystem>
#include <fstream>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"

namespace host_tests {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class Add : public testing::Test {
 protected:
  Add() : midi_(files_.Beside("a.mid")), audio_(files_.Beside("a.wav")), show_(files_.Beside("new")) {
    files_.WriteMidi(midi_, 4);
    WriteWav(audio_, FramesFromZero(32000), ShowFiles::kRate);
  }
  Ended Put(const std::string& number, const std::string& name, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"add", show_, number, name, "--midi", midi_, "--audio", audio_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Orbel(arguments);
  }
  ShowFiles files_;
  const std::string midi_;
  const std::string audio_;
  const std::string show_;
};

TEST_F(Add, CreatesTheShowAndCopiesBothFiles) {
  const Ended run = Put("12", "My Waltz");
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(run.out, "songs/12 My Waltz.mid\ndata/12 My Waltz.obd\n");
  EXPECT_EQ(ReadText(show_ + "/songs/12 My Waltz.mid"), ReadText(midi_));
  EXPECT_EQ(ReadText(show_ + "/data/12 My Waltz.obd"), ReadText(audio_));
  EXPECT_EQ(Orbel({"check", show_}).out, "no errors, no warnings\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(show_), fs::directory_iterator()), 2)
      << "nothing else is left";
}

TEST_F(Add, NeverOverwritesASong) {
  EXPECT_EQ(Put("12", "Waltz").status, 0);
  const Ended run = Put("12", "Polka");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: " + show_ +
                              "/songs/12 Waltz.mid: song 12 is there already; give another number, or "
                              "--replace\n");
  EXPECT_FALSE(fs::exists(show_ + "/songs/12 Polka.mid"));
}

TEST_F(Add, ANumberInAnotherSpellingIsTheSameNumber) {
  EXPECT_EQ(Put("1", "Waltz").status, 0);
  for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--replace"}}) {
    const Ended run = Put("01", "Polka", more);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.messages, "orbel: " + show_ +
                                "/songs/1 Waltz.mid: to a show \"1\" and \"01\" are one number; write it the "
                                "same, or give another\n");
  }
  EXPECT_EQ(Orbel({"check", show_}).status, 0) << "the show is what it was";
}

TEST_F(Add, CuesOfANumberInAnotherSpellingAreInTheWayToo) {
  fs::create_directories(show_ + "/songs");
  std::ofstream(show_ + "/songs/1 Waltz.toml") << "format = 1\n";
  const Ended run = Put("01", "Waltz");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("/songs/1 Waltz.toml: to a show \"1\" and \"01\" are one number"));
  EXPECT_EQ(Put("1", "Waltz").status, 0) << "cues may be there before their song";
}

TEST_F(Add, AFullDiskIsSaidInTheSystemsWordsAndLeavesNothing) {
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{10'000, before.rlim_max};  // the program inherits it: no file may grow beyond
  ::setrlimit(RLIMIT_FSIZE, &small);
  const Ended run = Put("1", "Waltz");
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: " + audio_ +
                              ": cannot be copied into the show: File too large; make room, or see that it "
                              "may be read\n");
  EXPECT_FALSE(fs::exists(show_));
}

TEST_F(Add, AFileIsNoShow) {
  std::ofstream(show_) << "not a folder";
  const Ended run = Put("1", "Waltz");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: " + show_ + ": is a file and not a folder; give the show another name\n");
  EXPECT_EQ(ReadText(show_), "not a folder");
}

TEST_F(Add, JsonIsAnArrayOfTheFiles) {
  const Ended run = Put("12", "Waltz", {"--json"});
  EXPECT_EQ(run.out, "[\n  \"songs/12 Waltz.mid\",\n  \"data/12 Waltz.obd\"\n]\n");
}

TEST_F(Add, ReplaceTakesThePlaceOfTheSongWhateverItsName) {
  EXPECT_EQ(Put("12", "Waltz").status, 0);
  WriteWav(audio_, FramesFromZero(31999), ShowFiles::kRate);
  EXPECT_EQ(Put("12", "Polka", {"--replace"}).status, 0);
  EXPECT_FALSE(fs::exists(show_ + "/songs/12 Waltz.mid"));
  EXPECT_FALSE(fs::exists(show_ + "/data/12 Waltz.obd"));
  EXPECT_EQ(ReadText(show_ + "/data/12 Polka.obd"), ReadText(audio_));
}

TEST_F(Add, WhatIsNoMidiOrNoAudioIsRefusedAndNothingIsLeft) {
  files_.Write("../a.mid", "no midi");
  EXPECT_EQ(Put("1", "Waltz").status, 1);
  EXPECT_FALSE(fs::exists(show_));
  files_.WriteMidi(midi_, 4);
  files_.Write("../a.wav", "no audio");
  const Ended run = Put("1", "Waltz");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("a.wav"));
  EXPECT_FALSE(fs::exists(show_));
}

TEST_F(Add, AFileThatIsNotThereIsNamed) {
  const Ended run = Orbel({"add", show_, "1", "Waltz", "--midi", midi_, "--audio", "no/such.wav"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: no/such.wav: is not a file that can be read; give one that is there\n");
  EXPECT_FALSE(fs::exists(show_));
}

TEST_F(Add, NewMusicHasToFitTheCuesThatAreThere) {
  EXPECT_EQ(Put("1", "Waltz").status, 0);
  const std::string cues = "format = 1\n[[caesura]]\nat = \"4\"\n";
  std::ofstream(show_ + "/songs/1 Waltz.toml") << cues;
  files_.WriteMidi(midi_, 2);
  const Ended run = Put("1", "Waltz", {"--replace"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("cannot be added: songs/1 Waltz.toml:3"));
}

TEST_F(Add, NamesThatNoFileCanHaveAreWrongUsage) {
  EXPECT_EQ(Put("1 2", "Waltz").status, 2);
  EXPECT_EQ(Put("../1", "Waltz").status, 2);
  EXPECT_EQ(Put("1", "a/b").status, 2);
  EXPECT_EQ(Put("1", std::string(300, 'x')).status, 2);
  EXPECT_FALSE(fs::exists(show_));
}

}  // namespace
}  // namespace host_tests
