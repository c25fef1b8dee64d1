#include <gtest/gtest.h>

#include "suite/midi/load_show.h"

namespace {

using tesk_midi::Problem;
using tesk_midi::ShowError;

struct Row {
  Problem problem;
  const char* text;
};

class ProblemTextTable : public testing::TestWithParam<Row> {};

TEST_P(ProblemTextTable, LeavesOutWhatIsNotKnown) {
  EXPECT_EQ(tesk_midi::ToString(GetParam().problem), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Places, ProblemTextTable,
    testing::Values(
        Row{{"songs/3 Waltz.toml", 12, 8, "3", "It is wrong."}, "songs/3 Waltz.toml:12:8: It is wrong."},
        Row{{"songs/3 Waltz.toml", 12, 0, "3", "It is wrong."}, "songs/3 Waltz.toml:12: It is wrong."},
        Row{{"songs/3 Waltz.mid", 0, 0, "3", "It is wrong."}, "songs/3 Waltz.mid: It is wrong."},
        Row{{"songs/3 Waltz.mid", 0, 8, "3", "It is wrong."}, "songs/3 Waltz.mid: It is wrong."},
        Row{{"", 12, 8, "", "It is wrong."}, "12:8: It is wrong."},
        Row{{"", 0, 0, "", "It is wrong."}, "It is wrong."}));

TEST(ShowError, CarriesEveryProblemAndSaysTheFirst) {
  const ShowError error({{"show.toml", 2, 1, "", "First."}, {"", 0, 0, "", "Second."}});
  EXPECT_STREQ(error.what(), "show.toml:2:1: First.");
  ASSERT_EQ(error.GetProblems().size(), 2u);
  EXPECT_EQ(error.GetProblems()[1].message, "Second.");
}

TEST(ShowError, HasATextWithoutAnyProblem) {
  EXPECT_STREQ(ShowError({}).what(), "The show cannot be loaded.");
}

}  // namespace
