// Ctrl-C and its like while the program reads, copies or writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <vector>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/support/wait_until.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;

constexpr std::chrono::minutes kLong{1};

class Interrupts : public testing::Test {
 protected:
  Interrupts() {
    files_.AddSong("1", "Waltz", 60);
    files_.AddSong("2", "Polka", 60);
    ::signal(SIGHUP, SIG_DFL);  // whatever the tests themselves were started with
  }
  // Every program that reads so far into a file with this in its name waits there.
  Environment Holding(const std::string& name, long bytes) const {
    return Refusing({{"ORBEL_HOLD_READ", name + ":" + std::to_string(bytes)},
                     {"ORBEL_HOLD_UNTIL", gate_},
                     {"ORBEL_COUNT_HELD", held_}});
  }
  bool IsHeld() const {
    return test_support::WaitUntil([this] { return !host_tests::ReadText(held_).empty(); }, kLong);
  }
  void LetGo() const { std::ofstream(gate_) << "go"; }

  ShowFiles files_;
  const std::string gate_ = files_.Beside("gate");
  const std::string held_ = files_.Beside("held");
};

// What only reads ends in the middle of a read that nobody lets go on.
class InterruptsWhileReading : public Interrupts, public testing::WithParamInterface<int> {
 protected:
  void ExpectEnded(const std::vector<std::string>& arguments, const std::string& words) {
    std::filesystem::remove(held_);
    RunningOrbel running(arguments);
    ASSERT_TRUE(IsHeld());
    running.Signal(GetParam());
    ASSERT_TRUE(running.EndsWithin(std::chrono::seconds(20)));
    const Ended run = running.WaitForEnd();
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.messages, "orbel: interrupted: " + words + "\n");
  }
};

TEST_P(InterruptsWhileReading, EndACheck) {
  const Environment holding = Holding("Polka.obd", 100'000);
  ExpectEnded({"check", files_.Show()}, files_.Show() + " was not checked");
  ExpectEnded({"check", files_.Show(), "--json"}, files_.Show() + " was not checked");
}

TEST_P(InterruptsWhileReading, EndWhatIsAskedOfAShow) {
  const Environment holding = Holding("Polka.obd", 0);
  ExpectEnded({"info", files_.Show()}, files_.Show() + " was not read");
  ExpectEnded({"info", files_.Show(), "--json"}, files_.Show() + " was not read");
  ExpectEnded({"where", files_.Show(), "2", "3.1"}, files_.Show() + " was not read");
}

INSTANTIATE_TEST_SUITE_P(Each, InterruptsWhileReading, testing::Values(SIGINT, SIGTERM, SIGHUP));

class InterruptsWhileOpening : public Interrupts, public testing::WithParamInterface<int> {};

TEST_P(InterruptsWhileOpening, EndBeforeTheFirstSongPlays) {
  const Environment holding = Holding("Waltz.obd", 100'000);
  RunningOrbel running({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(running.Says("song 1 is still loading: waiting for it"));
  running.Signal(GetParam());
  ASSERT_TRUE(running.EndsWithin(std::chrono::seconds(20)));
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, testing::EndsWith("song 1 is still loading: waiting for it\n"
                                              "orbel: interrupted: " +
                                              files_.Show() + " was not played\n"));
}

TEST_P(InterruptsWhileOpening, EndARenderBeforeItsFirstFrame) {
  const Environment holding = Holding("Waltz.obd", 100'000);
  const std::string out = files_.Beside("out.wav");
  RunningOrbel running({"render", files_.Show(), "-o", out});
  ASSERT_TRUE(IsHeld());
  running.Signal(GetParam());
  ASSERT_TRUE(running.EndsWithin(std::chrono::seconds(20)));
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.messages, "orbel: interrupted: " + out + " was not written\n");
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_FALSE(std::filesystem::exists(out + ".part"));
}

// The file is begun by then, and is taken away when the song is there.
TEST_P(InterruptsWhileOpening, LeaveNothingOfAFileThatIsPlayedInto) {
  const Environment holding = Holding("Waltz.obd", 100'000);
  const std::string out = files_.Beside("out.wav");
  RunningOrbel running({"play", files_.Show(), "--output", "file", "--device", out});
  ASSERT_TRUE(running.Says("song 1 is still loading: waiting for it"));
  running.Signal(GetParam());
  LetGo();
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.messages, testing::EndsWith("orbel: interrupted: " + files_.Show() + " was not played\n"));
  EXPECT_FALSE(std::filesystem::exists(out));
  EXPECT_FALSE(std::filesystem::exists(out + ".part"));
}

INSTANTIATE_TEST_SUITE_P(Each, InterruptsWhileOpening, testing::Values(SIGINT, SIGTERM));

class InterruptsWhileWriting : public Interrupts, public testing::WithParamInterface<int> {};

TEST_P(InterruptsWhileWriting, LeaveNothingOfASongThatIsAdded) {
  const std::string show = files_.Beside("new");
  const std::string audio = files_.At("data/2 Polka.obd");
  const Environment holding = Holding("Polka.obd", 100'000);
  RunningOrbel running(
      {"add", show, "7", "Reel", "--midi", files_.At("songs/2 Polka.mid"), "--audio", audio});
  ASSERT_TRUE(IsHeld());
  running.Signal(GetParam());
  LetGo();
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.messages, "orbel: interrupted: " + audio + " was not copied into the show\n");
  EXPECT_FALSE(std::filesystem::exists(show));
}

TEST_P(InterruptsWhileWriting, LeaveNothingOfTheDemo) {
  const std::string folder = files_.Beside("demo");
  RunningOrbel running({"demo", folder});
  ASSERT_TRUE(test_support::WaitUntil([&] { return std::filesystem::exists(folder + "/show.toml"); }, kLong));
  running.Signal(GetParam());
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.messages, "orbel: interrupted: " + folder + " was not written\n");
  EXPECT_FALSE(std::filesystem::exists(folder));
}

INSTANTIATE_TEST_SUITE_P(Each, InterruptsWhileWriting, testing::Values(SIGINT, SIGTERM, SIGHUP));

// As a program that is meant to outlive its terminal is started.
TEST_F(Interrupts, AHangUpThatIsIgnoredFromTheStartEndsNothing) {
  const Environment holding = Holding("Polka.obd", 100'000);
  struct sigaction before {};
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(sigaction(SIGHUP, &ignore, &before), 0);
  RunningOrbel running({"check", files_.Show()});
  EXPECT_EQ(sigaction(SIGHUP, &before, nullptr), 0);
  ASSERT_TRUE(IsHeld());
  running.Signal(SIGHUP);
  LetGo();
  EXPECT_EQ(running.WaitForEnd().status, 0);
}

}  // namespace
}  // namespace faults
