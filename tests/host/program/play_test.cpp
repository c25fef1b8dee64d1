#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"

namespace host_tests {
namespace {

using testing::HasSubstr;

TEST(Play, WithoutATerminalPlaysTheShowThroughAndEnds) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2, "[[vamp]]\nfrom = \"1.2\"\nto = \"1.3\"\n[[caesura]]\nat = \"2\"\n");
  files.AddSong("2", "Polka", 1);
  const Ended run = Orbel({"play", files.Show(), "--output", "null"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(
      run.messages,
      HasSubstr("No terminal, so nobody at the keys: a vamp is played 1 time, a caesura waits 0 s, and song "
                "follows song to the end of the show.\nPlaying to a clock without sound, 8000 Hz, 256 frames "
                "a period.\n"));
  EXPECT_THAT(run.messages, HasSubstr("1 Waltz   bar "));
  EXPECT_THAT(run.messages, HasSubstr("2 Polka   bar "));
}

TEST(Play, AScriptActsWhereNobodyIsAtTheKeys) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 30, "[[vamp]]\nfrom = \"1.1\"\nto = \"1.2\"\n");
  files.Write("../script.txt", "at 1.1 pass 3 go\nat 1.3 seek 30\n");
  const Ended run = Orbel({"play", files.Show(), "--output", "null", "--script", files.Beside("script.txt")});
  EXPECT_EQ(run.status, 0) << run.messages;
}

TEST(Play, AVampThatTheScriptDoesNotLeaveEndsWithStatusThree) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2, "[[vamp]]\nfrom = \"1.1\"\nto = \"1.2\"\n");
  files.Write("../script.txt", "");
  const Ended run = Orbel({"play", files.Show(), "--output", "null", "--script", files.Beside("script.txt")});
  EXPECT_EQ(run.status, 3) << run.messages;
}

TEST(Play, CtrlCAsksOnceWhilePlayingAndEndsTheSecondTime) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  RunningOrbel running({"play", files.Show(), "--output", "null"});
  ASSERT_TRUE(running.Says("playing   next: 61.1 end"));
  running.Signal(SIGINT);
  ASSERT_TRUE(running.Says("playing: Ctrl-C once more ends it"));
  running.Signal(SIGINT);
  EXPECT_EQ(running.WaitForEnd().status, 0);
}

TEST(Play, AHangUpDoesNotEndIt) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  RunningOrbel running({"play", files.Show(), "--output", "null"});
  ASSERT_TRUE(running.Says("playing   next: 3.1 end"));
  running.Signal(SIGHUP);
  EXPECT_EQ(running.WaitForEnd().status, 0) << "at the end of the show, and not by the signal";
}

TEST(Play, ASongThatCannotBePlayedIsSaidAndPassedOver) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 1);
  files.AddSong("2", "Polka", 1);
  files.Write("data/1 Waltz.obd", "no audio");
  const Ended run = Orbel({"play", files.Show(), "--output", "null"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.messages, HasSubstr("data/1 Waltz.obd"));
  EXPECT_THAT(run.messages, HasSubstr("2 Polka   bar "));
}

}  // namespace
}  // namespace host_tests
