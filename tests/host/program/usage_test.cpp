#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"

namespace host_tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::vector<std::string> kVerbs{"demo", "info",    "where", "check", "render",
                                      "play", "devices", "bench", "add"};

TEST(Usage, HelpNamesEveryVerbAndTheExitStatuses) {
  const Ended run = Orbel({"--help"});
  EXPECT_EQ(run.status, 0);
  for (const std::string& verb : kVerbs) EXPECT_THAT(run.out, HasSubstr("\n  " + verb + " "));
  EXPECT_THAT(run.out,
              HasSubstr("Exit status: 0 done; 1 a failure while running; 2 wrong usage; 3 the performance"));
}

TEST(Usage, EveryVerbHasHelpOfItsOwn) {
  for (const std::string& verb : kVerbs) {
    const Ended run = Orbel({verb, "--help"});
    EXPECT_EQ(run.status, 0) << verb;
    EXPECT_THAT(run.out, HasSubstr("Usage: orbel " + verb)) << verb;
    EXPECT_THAT(run.out, HasSubstr("Exit status: 0 done; 1 a failure while running; 2 wrong usage; 3 the"))
        << verb;
    EXPECT_EQ(run.messages, "") << verb;
  }
}

TEST(Usage, WhatIsNotSaidIsThatOfAStage) {
  const std::string play = Orbel({"play", "--help"}).out;
  for (const char* const option :
       {"--output TEXT:{auto,jack,desktop,null,file}=auto", "--period UINT:16 to 8192=256 ",
        "--ahead FLOAT:1 to 2000=15 ", "--on-device-loss TEXT:{run-on,hold,end}=run-on",
        "--stretch TEXT:{faster,finer}=faster", "--crossfade FLOAT:0 to 1000=5 ",
        "--fade FLOAT:0 to 1000=3 "}) {
    EXPECT_THAT(play, HasSubstr(option));
  }
  const std::string bench = Orbel({"bench", "live", "--help"}).out;
  EXPECT_THAT(bench, HasSubstr("--period INT:16 to 8192=[64,128,256,512,1024] "));
  EXPECT_THAT(bench, HasSubstr("--ahead FLOAT:1 to 2000=15 "));
}

TEST(Usage, ResultsThatAreLostAreAFailure) {
  for (const char* option : {"--help", "--version"}) {
    const Ended run = Orbel({option}, "/dev/full");
    EXPECT_EQ(run.status, 1) << option;
    EXPECT_EQ(run.messages,
              "orbel: the results could not be written to standard output; make room where they go\n");
  }
}

TEST(Usage, AReaderThatHasSeenEnoughIsNoFailure) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  // The reader closes its end of the pipe first, and only then lets the program begin.
  const std::string begin = files.Beside("begin");
  const std::string messages = files.Beside("messages");
  const std::string script = "mkfifo '" + begin + "'; { read go; '" ORBEL_PROGRAM "' info '" + files.Show() +
                             "' 2>'" + messages + "'; echo $? >>'" + messages + "'; } <'" + begin +
                             "' | { exec 0<&-; echo go >'" + begin + "'; }";
  EXPECT_EQ(std::system(script.c_str()), 0);
  EXPECT_EQ(ReadText(messages), "0\n");
}

TEST(Usage, TheVersionIsThatOfTheBuild) {
  const Ended run = Orbel({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, ORBEL_VERSION "\n");
}

struct WrongUsage {
  std::vector<std::string> arguments;
  std::string message;
};

class WrongUsages : public testing::TestWithParam<WrongUsage> {};

TEST_P(WrongUsages, EndWithStatusTwoAndSayWhy) {
  const Ended run = Orbel(GetParam().arguments);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.messages, StartsWith(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    Usage, WrongUsages,
    testing::Values(
        WrongUsage{{}, "orbel: say what to do: demo, info, where, check, render, play, devices, bench, add"},
        WrongUsage{{"sing"},
                   "orbel: there is no \"sing\"; there are demo, info, where, check, render, play, devices, "
                   "bench, add"},
        WrongUsage{{"--loud"}, "orbel: there is no \"--loud\"; there are demo, info"},
        WrongUsage{{"info"}, "orbel: SHOW is required"},
        WrongUsage{
            {"info", "--loud", "show"},
            "orbel: The following argument was not expected: --loud\nRun \"orbel info --help\" for more.\n"},
        WrongUsage{{"where", "show"}, "orbel: SONG is required"},
        WrongUsage{{"where", "show", "1"}, "orbel: POSITION is required"},
        WrongUsage{{"render", "show"}, "orbel: --output is required"},
        WrongUsage{{"render", "show", "-o", ""},
                   "orbel: --output: the name is empty; give the sound file to write\n"},
        WrongUsage{{"info", ""}, "orbel: SHOW: the name is empty; give the show folder\n"},
        WrongUsage{{"demo", ""}, "orbel: DIR: the name is empty; give the folder to write\n"},
        WrongUsage{{"where", "show", "", "1.1"},
                   "orbel: SONG: the number is empty; give the song's number\n"},
        WrongUsage{{"info", "show", "-n", ""},
                   "orbel: --song: the number is empty; give the song's number\n"},
        WrongUsage{{"play", "show", "--song", ""},
                   "orbel: --song: the number is empty; give the song's number\n"},
        WrongUsage{{"render", "show", "-o", "x", "--trace", ""},
                   "orbel: --trace: the name is empty; give the CSV file to write\n"},
        WrongUsage{{"render", "show", "-o", "x", "--format", "mp3"}, "orbel: --format: mp3 not in {"},
        WrongUsage{{"render", "show", "-o", "x", "--vamp-passes", "0"},
                   "orbel: --vamp-passes: \"0\" is not a whole number from 1 to 1000000\n"},
        WrongUsage{{"render", "show", "-o", "x", "--crossfade", "-1"},
                   "orbel: --crossfade: \"-1\" is not a number from 0 to 1000\n"},
        WrongUsage{{"render", "show", "-o", "x", "--crossfade", "nan"},
                   "orbel: --crossfade: \"nan\" is not a number from 0 to 1000\n"},
        WrongUsage{{"render", "show", "-o", "x", "--caesura-silence", "0x10"},
                   "orbel: --caesura-silence: \"0x10\" is not a number from 0 to 3600\n"},
        WrongUsage{{"render", "show", "-o", "x", "--caesura-silence", "1,5"},
                   "orbel: --caesura-silence: \"1,5\" is not a number from 0 to 3600\n"},
        WrongUsage{{"render", "show", "-o", "x", "--rate", "44100.5"},
                   "orbel: --rate: \"44100.5\" is not a whole number from 8000 to 384000\n"},
        WrongUsage{{"play", "show", "--output", "horn"}, "orbel: --output: horn not in {"},
        WrongUsage{{"bench"}, "orbel: A subcommand is required\nRun \"orbel bench --help\" for more.\n"},
        WrongUsage{{"bench", "live", "--period", "8"},
                   "orbel: --period: \"8\" is not a whole number from 16 to 8192\n"},
        WrongUsage{{"add", "show", "1", "Waltz"}, "orbel: --midi is required"}));

}  // namespace
}  // namespace host_tests
