// What happens around the program: clocks that jump, strange terminals, other places and a
// second program on the same show.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/faults/circumstances.h"
#include "tests/host/show_files.h"
#include "tests/support/limit.h"

namespace faults {
namespace {

using host_tests::Ended;
using host_tests::Orbel;
using host_tests::ReadText;
using host_tests::RunningOrbel;
using host_tests::ShowFiles;
using test_support::Limit;
using testing::HasSubstr;

class Surroundings : public testing::Test {
 protected:
  Surroundings() {
    files_.AddSong("1", "Waltz", 1, "[[caesura]]\nat = \"1.2\"\n[[tempo]]\nat = \"1\"\nscale = 1.0\n");
    files_.AddSong("2", "Polka", 1);
  }
  ShowFiles files_;
};

TEST_F(Surroundings, AClockThatJumpsByHoursChangesNothing) {
  const auto jumping = Refusing({{"ORBEL_JUMPY_CLOCK", "1"}});
  const auto begin = std::chrono::steady_clock::now();
  const Ended run = Orbel({"play", files_.Show(), "--caesura-silence", "0.3"});
  const auto took = std::chrono::steady_clock::now() - begin;
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_THAT(run.messages, HasSubstr("2 Polka   bar 1.1"));
  EXPECT_GE(took, std::chrono::milliseconds(2000)) << "two songs of a second each";
  EXPECT_LT(took, std::chrono::minutes(5));
}

TEST_F(Surroundings, AFileSizeLimitEndsNothingBySignal) {
  const Limit limit(RLIMIT_FSIZE, 4096);
  const Ended run = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(run.status, 1) << "and not by SIGXFSZ";
}

TEST_F(Surroundings, ATerminalOfNoKnownKindIsNoTerminal) {
  const Environment strange(Environment::Variables{{"TERM", "no-such-terminal"}});
  const Ended run = Orbel({"play", files_.Show()});
  EXPECT_EQ(run.status, 0) << run.messages;
}

TEST_F(Surroundings, LocalesReadAndWriteNumbersAlike) {
  const std::vector<std::string> arguments{"info", files_.Show(), "--json"};
  const Ended plain = Orbel(arguments);
  ASSERT_EQ(plain.status, 0);
  for (const char* name : {"C", "C.UTF-8", "de_DE.UTF-8", "no_SUCH"}) {
    const Environment elsewhere(Environment::Variables{{"LC_ALL", name}, {"LANG", name}});
    const Ended run = Orbel(arguments);
    EXPECT_EQ(run.status, 0) << name;
    EXPECT_EQ(run.out, plain.out) << name;
  }
}

TEST_F(Surroundings, TheSameShowPlayedTwiceDisturbsNobody) {
  RunningOrbel playing({"play", files_.Show()});
  ASSERT_TRUE(playing.Says("1 Waltz   bar 1.1"));
  const Ended render = Orbel({"render", files_.Show(), "-o", files_.Beside("out.wav")});
  EXPECT_EQ(render.status, 0) << render.messages;
  const Ended second = Orbel({"play", files_.Show()});
  EXPECT_EQ(second.status, 0) << second.messages;
  EXPECT_EQ(playing.WaitForEnd().status, 0);
}

TEST_F(Surroundings, TwoRendersIntoOneFileLeaveAWholeOne) {
  const std::vector<std::string> arguments{"render", files_.Show(), "-o", files_.Beside("out.wav")};
  ASSERT_EQ(Orbel(arguments).status, 0);
  const std::string expected = ReadText(files_.Beside("out.wav"));
  RunningOrbel first(arguments);
  RunningOrbel second(arguments);
  const Ended one = first.WaitForEnd();
  const Ended two = second.WaitForEnd();
  EXPECT_TRUE(one.status == 0 || two.status == 0) << one.messages << two.messages;
  EXPECT_TRUE(ReadText(files_.Beside("out.wav")) == expected);
}

}  // namespace
}  // namespace faults
