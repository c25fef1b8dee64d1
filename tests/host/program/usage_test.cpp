#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/run_orbel.h"

namespace host_tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::vector<std::string> kVerbs{"demo", "info", "where", "check", "render", "play", "add"};

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
    EXPECT_EQ(run.messages, "") << verb;
  }
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
    testing::Values(WrongUsage{{}, "A subcommand is required"},
                    WrongUsage{{"sing"}, "A subcommand is required"},
                    WrongUsage{{"info"}, "SHOW is required"},
                    WrongUsage{{"info", "--loud", "show"}, "The following argument was not expected: --loud"},
                    WrongUsage{{"where", "show"}, "SONG is required"},
                    WrongUsage{{"where", "show", "1"}, "POSITION is required"},
                    WrongUsage{{"render", "show"}, "--output is required"},
                    WrongUsage{{"render", "show", "-o", "x", "--format", "mp3"}, "--format: mp3 not in {"},
                    WrongUsage{{"render", "show", "-o", "x", "--vamp-passes", "0"},
                               "--vamp-passes: Value 0 not in range 1 to 1000000"},
                    WrongUsage{{"render", "show", "-o", "x", "--crossfade", "-1"},
                               "--crossfade: Value -1 not in range"},
                    WrongUsage{{"play", "show", "--output", "horn"}, "--output: horn not in {null}"},
                    WrongUsage{{"add", "show", "1", "Waltz"}, "--midi is required"}));

}  // namespace
}  // namespace host_tests
