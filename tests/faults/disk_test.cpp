// Disks that are full, slow or broken, and files that go away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/support/limit.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;
using test_support::Limit;
using testing::HasSubstr;

class Disk : public testing::Test {
 protected:
  std::string Out() const { return files_.Beside("out.wav"); }
  Ended Render() { return Orbel({"render", files_.Show(), "-o", Out()}); }
  void ExpectNothingWritten() const {
    EXPECT_FALSE(std::filesystem::exists(Out()));
    EXPECT_FALSE(std::filesystem::exists(Out() + ".part"));
  }

  ShowFiles files_;
};

TEST_F(Disk, ThatIsFullWhileRenderingIsToldWithTheBytesThatAreMissing) {
  files_.AddSong("1", "Waltz", 8);
  const Limit limit(RLIMIT_FSIZE, 100'000);
  const Ended run = Render();
  EXPECT_EQ(run.status, 1);
  ExpectEndedInWords(run);
  EXPECT_THAT(run.messages, HasSubstr("orbel: " + Out() + ": cannot be written: File too large; "));
  EXPECT_THAT(run.messages,
              HasSubstr(" bytes and what follows them are missing, so nothing was kept. Choose another "
                        "place, or make room."));
  ExpectNothingWritten();
}

TEST_F(Disk, ThatIsFullWhileRenderingIsToldInTheSystemsWords) {
  files_.AddSong("1", "Waltz", 8);
  for (const char* room : {"out.wav:0", "out.wav:100000"}) {
    const auto full = Refusing({{"ORBEL_FULL_DISK", room}});
    const Ended run = Render();
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.messages,
                HasSubstr("orbel: " + Out() + ": cannot be written: No space left on device; "));
    ExpectNothingWritten();
  }
}

TEST_F(Disk, ThatIsFullLeavesTheFileOfAnEarlierRender) {
  files_.AddSong("1", "Waltz", 8);
  ASSERT_EQ(Render().status, 0);
  const std::string before = host_tests::ReadText(Out());
  const Limit limit(RLIMIT_FSIZE, 100'000);
  EXPECT_EQ(Render().status, 1);
  EXPECT_TRUE(host_tests::ReadText(Out()) == before);
}

TEST_F(Disk, ThatIsFullWhileASongIsAddedLeavesTheShowAsItWas) {
  files_.AddSong("1", "Waltz", 8);
  files_.WriteMidi(files_.Beside("new.mid"), 8);
  host_tests::WriteWav(files_.Beside("new.wav"), host_tests::FramesFromZero(64'000), ShowFiles::kRate);
  const Limit limit(RLIMIT_FSIZE, 100'000);
  const Ended run = Orbel({"add", files_.Show(), "2", "Polka", "--midi", files_.Beside("new.mid"), "--audio",
                           files_.Beside("new.wav")});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr(files_.Beside("new.wav") + ": cannot be copied into the show"));
  EXPECT_FALSE(std::filesystem::exists(files_.At("songs/2 Polka.mid")));
  for (const auto& entry : std::filesystem::directory_iterator(files_.Show())) {
    EXPECT_THAT(entry.path().filename().string(), testing::AnyOf("songs", "data")) << "left behind";
  }
}

// At the first file, in a song's MIDI file, in its audio.
TEST_F(Disk, ThatIsFullWhileADemoIsWrittenIsToldWithFileAndMissingBytesAndNothingIsLeft) {
  const std::string demo = files_.Beside("new/demo");
  const std::vector<std::pair<long, std::string>> kRooms{
      {0, "/show\\.toml"}, {1000, "/songs/1 Overture\\.mid"}, {100'000, "/data/1 Overture\\.obd"}};
  for (const auto& [room, file] : kRooms) {
    SCOPED_TRACE(room);
    const auto full = Refusing({{"ORBEL_FULL_DISK", "new/demo:" + std::to_string(room)}});
    const Ended run = Orbel({"demo", demo});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.messages,
                testing::MatchesRegex("orbel: " + demo + file +
                                      ": not written \\(No space left on device, [0-9]+ of [0-9]+ bytes are "
                                      "missing\\); make room on the disk and write the demo again\\.\n"));
    EXPECT_FALSE(std::filesystem::exists(files_.Beside("new")));
  }
}

TEST_F(Disk, ThatIsFullWhileADemoIsWrittenOverAnotherLeavesThatOne) {
  const std::string demo = files_.Beside("demo");
  const Ended first = Orbel({"demo", demo});
  ASSERT_EQ(first.status, 0) << first.messages;
  const std::string before = host_tests::ReadText(demo + "/data/1 Overture.obd");
  ASSERT_FALSE(before.empty());
  const auto full = Refusing({{"ORBEL_FULL_DISK", "/demo/data:100000"}});
  EXPECT_EQ(Orbel({"demo", demo}).status, 1);
  EXPECT_EQ(host_tests::ReadText(demo + "/data/1 Overture.obd"), before);
  EXPECT_FALSE(std::filesystem::exists(demo + "/data/1 Overture.obd.part"));
  EXPECT_EQ(Orbel({"info", demo}).status, 0);
}

TEST_F(Disk, ThatIsFullForTheResultsIsNoSuccess) {
  files_.AddSong("1", "Waltz", 8);
  for (const char* verb : {"info", "check"}) {
    const Ended run = Orbel({verb, files_.Show()}, "/dev/full");
    EXPECT_EQ(run.status, 1) << verb;
    EXPECT_THAT(run.messages, HasSubstr("the results could not be written")) << verb;
  }
}

TEST_F(Disk, ThatFailsInTheMiddleOfASongNamesTheFileAndTheOtherSongsPlay) {
  files_.AddSong("1", "Waltz", 8);
  files_.AddSong("2", "Polka", 2);
  const auto refusing = Refusing({{"ORBEL_REFUSE_READ", "1 Waltz.obd:100000"}});
  const Ended broken = Orbel({"render", files_.Show(), "-o", Out(), "--song", "1"});
  EXPECT_EQ(broken.status, 1);
  ExpectEndedInWords(broken);
  EXPECT_THAT(broken.messages, HasSubstr("1 Waltz.obd: "));
  EXPECT_THAT(broken.messages, HasSubstr("Input/output error"));
  ExpectNothingWritten();
  const Ended check = Orbel({"check", files_.Show()});
  EXPECT_EQ(check.status, 5);
  EXPECT_THAT(check.out, HasSubstr("data/1 Waltz.obd"));
  EXPECT_THAT(check.out, HasSubstr("Input/output error"));
  EXPECT_EQ(Orbel({"render", files_.Show(), "-o", Out(), "--song", "2"}).status, 0);
  EXPECT_EQ(host_tests::ReadFloatWav(Out()).size(), 2U * ShowFiles::kRate);
}

TEST_F(Disk, WhoseReadsTakeAFifthOfASecondOnlyTakesLonger) {
  files_.AddSong("1", "Waltz", 1);
  files_.AddSong("2", "Polka", 1);
  const auto refusing = Refusing({{"ORBEL_SLOW_READ", "200000"}});
  // A render thread that waited for one of these reads would run out every time; one that a busy machine
  // holds up does now and then.
  bool runsOut = true;
  for (int attempt = 0; attempt < 3 && runsOut; ++attempt) {
    const Ended run = Orbel({"play", files_.Show(), "--output", "null", "--ahead", "150"});
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_THAT(run.messages, HasSubstr("1 Waltz   bar "));
    EXPECT_THAT(run.messages, HasSubstr("2 Polka   bar "));
    EXPECT_THAT(run.messages, HasSubstr("underruns 0 frames"));
    runsOut = testing::Matches(testing::ContainsRegex("underruns [1-9]"))(run.messages);
  }
  EXPECT_FALSE(runsOut);
}

TEST_F(Disk, ThatIsPulledOutLetsTheSongPlayOnFromMemoryAndEndsTheShowInWords) {
  files_.AddSong("1", "Waltz", 3);
  files_.AddSong("2", "Polka", 1);
  files_.AddSong("3", "Galop", 1);
  RunningOrbel running({"play", files_.Show()});
  ASSERT_TRUE(running.Says("1 Waltz   bar "));
  std::filesystem::remove_all(files_.At("data"));
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, HasSubstr("1 Waltz   bar 4.1")) << "played to its end";
  EXPECT_THAT(run.messages, HasSubstr("/show: the show cannot go on: Unable to list folder"));
  EXPECT_THAT(run.messages, HasSubstr("No such file or directory"));
}

TEST_F(Disk, PowerCutWhileASongIsReplacedLeavesTheOldOrTheNew) {
  files_.AddSong("1", "Waltz", 8);
  files_.WriteMidi(files_.Beside("new.mid"), 4);
  host_tests::WriteWav(files_.Beside("new.wav"), host_tests::FramesFromZero(32'000), ShowFiles::kRate);
  for (int attempt = 0; attempt < 12; ++attempt) {
    RunningOrbel running({"add", files_.Show(), "1", "Waltz", "--midi", files_.Beside("new.mid"), "--audio",
                          files_.Beside("new.wav"), "--replace"});
    ::usleep(static_cast<useconds_t>(attempt) * 2500);
    running.Signal(SIGKILL);
    running.WaitForEnd();
    const auto midi = std::filesystem::file_size(files_.At("songs/1 Waltz.mid"));
    const auto audio = std::filesystem::file_size(files_.At("data/1 Waltz.obd"));
    EXPECT_GT(midi, 0U);
    EXPECT_THAT(audio, testing::AnyOf(44U + 4U * 64'000, 44U + 4U * 32'000));
    const Ended check = Orbel({"check", files_.Show()});
    EXPECT_EQ(check.status, 0) << check.out;
  }
}

}  // namespace
}  // namespace faults
