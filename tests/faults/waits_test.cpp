// Songs that the performer comes to before they are decoded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <fstream>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/host/terminal_program.h"
#include "tests/support/wait_until.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::OrbelInATerminal;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;

class Waits : public testing::Test {
 protected:
  // What comes behind the first tenth of a megabyte of that song's audio is held back from now on.
  Environment Holding(const std::string& song) const {
    return Refusing(
        {{"ORBEL_HOLD_READ", song + ":100000"}, {"ORBEL_HOLD_UNTIL", gate_}, {"ORBEL_COUNT_HELD", held_}});
  }
  // Decoding that has not come as far is broken off before anybody has to wait for it.
  bool IsHeld() const {
    return test_support::WaitUntil([this] { return !host_tests::ReadText(held_).empty(); });
  }
  void LetGo() const { std::ofstream(gate_) << "go"; }

  ShowFiles files_;
  const std::string gate_ = files_.Beside("gate");
  const std::string held_ = files_.Beside("held");
};

TEST_F(Waits, ASongThatIsSteppedToIsNamedWhileItIsWaitedFor) {
  files_.AddSong("1", "Waltz", 60);
  files_.AddSong("2", "Polka", 60);
  files_.AddSong("3", "Galop", 60);
  const Environment holding = Holding("Galop");
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type("nn");
  EXPECT_TRUE(orbel.Shows("song 3 is still loading: waiting for it"));
  LetGo();
  EXPECT_TRUE(orbel.Shows("3 Galop   bar 1.1   240 bpm   stopped"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Waits, TheFirstSongIsNamedWhileTheShowIsOpened) {
  files_.AddSong("1", "Waltz", 60);
  const Environment holding = Holding("Waltz");
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("song 1 is still loading: waiting for it"));
  LetGo();
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Waits, ASongThatIsLeftBehindIsNamedWhileItsLoaderIsWaitedFor) {
  files_.AddSong("1", "Waltz", 2);
  files_.AddSong("2", "Polka", 2);
  files_.AddSong("3", "Galop", 60);
  const Environment holding = Holding("Galop");
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type("n");
  ASSERT_TRUE(orbel.Shows("2 Polka   bar 1.1   240 bpm   stopped"));
  ASSERT_TRUE(IsHeld());
  orbel.Type("b");
  EXPECT_TRUE(orbel.Shows("song 3 is still loading: waiting for it"));
  LetGo();
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Waits, GoIsObeyedWhenTheSongIsThere) {
  files_.AddSong("1", "Waltz", 60);
  files_.AddSong("2", "Polka", 60);
  const Environment holding = Holding("Polka");
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type("n");
  EXPECT_TRUE(orbel.Shows("song 2 is still loading: waiting for it"));
  orbel.Type(" ");
  LetGo();
  EXPECT_TRUE(orbel.ShowsLike("2 Polka   bar (?!1\\.1 )\\S+   240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Waits, AScriptThatComesToASongTooEarlySaysSoAndGoesOn) {
  files_.AddSong("1", "Waltz", 60);
  files_.AddSong("2", "Polka", 60);
  std::ofstream(files_.Beside("script")) << "time 0.2 next\nat 1.3 stop\n";
  const Environment holding = Holding("Polka");
  RunningOrbel running({"play", files_.Show(), "--output", "null", "--script", files_.Beside("script")});
  EXPECT_TRUE(running.Says("song 2 is still loading: waiting for it"));
  LetGo();
  const Ended run = running.WaitForEnd();
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, testing::ContainsRegex("2 Polka   bar [^ ]+   240 bpm   playing"));
}

TEST_F(Waits, AnAttaccaIntoASongThatIsNotDecodedIsNotCalledPlaying) {
  files_.AddSong("1", "Waltz", 1, "attacca = true\n");
  files_.AddSong("2", "Polka", 60);
  const Environment holding = Holding("Polka");
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("song 2 is still loading: waiting for it"));
  EXPECT_TRUE(orbel.Shows("2 Polka   bar 1.1   240 bpm   loading"));
  LetGo();
  EXPECT_TRUE(orbel.ShowsLike("2 Polka   bar (?!1\\.1 )\\S+   240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Waits, ARenderNamesItsFirstSongInThePlaceOfItsProgress) {
  files_.AddSong("1", "Waltz", 60);
  const Environment holding = Holding("Waltz");
  OrbelInATerminal orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_TRUE(orbel.Shows("\r\x1b[Ksong 1 is still loading: waiting for it"));
  LetGo();
  EXPECT_TRUE(orbel.Shows("\r\x1b[K[####"));
  EXPECT_TRUE(orbel.Shows("\r\x1b[K" + files_.Beside("out.wav") + ": 1:00.000, 480000 frames"));
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST_F(Waits, ARenderNamesTheSongThatAnAttaccaWaitsFor) {
  files_.AddSong("1", "Waltz", 1, "attacca = true\n");
  files_.AddSong("2", "Polka", 60);
  const Environment holding = Holding("Polka");
  OrbelInATerminal orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_TRUE(orbel.Shows("] song 1  0:0"));
  EXPECT_TRUE(orbel.Shows("\r\x1b[Ksong 2 is still loading: waiting for it"));
  LetGo();
  EXPECT_TRUE(orbel.Shows("] song 2  0:"));
  EXPECT_TRUE(orbel.Shows("\r\x1b[K" + files_.Beside("out.wav") + ": 1:01.000, 488000 frames"));
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

// As on a network share that does not answer.
TEST_F(Waits, ASongThatQuittingWaitsForIsNamed) {
  files_.AddSong("1", "Waltz", 2);
  files_.AddSong("2", "Polka", 60);
  const Environment holding = Holding("Polka");
  OrbelInATerminal orbel({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  ASSERT_TRUE(IsHeld());
  orbel.Type("q");
  // The first song may have been waited for as well, on a busy machine.
  const std::string said = "song 2 is still loading";
  EXPECT_TRUE(orbel.Shows(said + ": waiting for it"));
  LetGo();
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_EQ(orbel.GetScreen().find(said), orbel.GetScreen().rfind(said)) << "once";
}

// Decoding the second song to its end would take a minute and a half and more.
TEST_F(Waits, QuittingBreaksOffWhatIsBeingDecoded) {
  files_.AddSong("1", "Waltz", 300);
  files_.AddSong("2", "Polka", 1200);
  const Environment slow = Refusing({{"ORBEL_SLOW_READ", "300000"}});
  RunningOrbel running({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(running.Says("240 bpm   playing"));
  running.Signal(SIGTERM);
  EXPECT_TRUE(running.EndsWithin(std::chrono::seconds(30)));
  EXPECT_EQ(running.WaitForEnd().status, 0);
}

TEST_F(Waits, QuittingDoesNotWaitForAnAttaccaEither) {
  files_.AddSong("1", "Waltz", 1, "attacca = true\n");
  files_.AddSong("2", "Polka", 1200);
  const Environment slow = Refusing({{"ORBEL_SLOW_READ", "300000"}});
  RunningOrbel running({"play", files_.Show(), "--output", "null"});
  ASSERT_TRUE(running.Says("song 2 is still loading: waiting for it"));
  running.Signal(SIGTERM);
  EXPECT_TRUE(running.EndsWithin(std::chrono::seconds(30)));
  EXPECT_EQ(running.WaitForEnd().status, 0);
}

// Every read takes longer than the wait that a person notices.
TEST_F(Waits, ARenderWithoutATerminalSaysNothingOfThem) {
  files_.AddSong("1", "Waltz", 1, "attacca = true\n");
  files_.AddSong("2", "Polka", 1);
  const Environment slow = Refusing({{"ORBEL_SLOW_READ", "300000"}});
  const Ended run = host_tests::Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.messages, files_.Beside("out.wav") + ": 0:02.000, 16000 frames\n");
}

}  // namespace
}  // namespace faults
