#include "host/session/told_problems.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orbel::host {
namespace {

using testing::ElementsAre;

std::vector<tesk_midi::Problem> Problems(std::size_t errors, std::size_t warnings) {
  std::vector<tesk_midi::Problem> problems(errors + warnings);
  for (std::size_t i = 0; i < problems.size(); ++i) {
    problems[i].isWarning = i < warnings;
    problems[i].message = std::to_string(i);
  }
  return problems;
}

TEST(ToldProblems, AFewAreToldInTheirOrder) {
  EXPECT_THAT(TellProblems({}, "show"), ElementsAre());
  EXPECT_THAT(TellProblems(Problems(2, 1), "show"), ElementsAre("warning: 0", "1", "2"));
}

TEST(ToldProblems, AsManyAsCanBeReadAreAllTold) {
  EXPECT_EQ(TellProblems(Problems(kMostProblemsTold, 0), "show").size(), kMostProblemsTold);
}

TEST(ToldProblems, OfMoreTheRestIsCounted) {
  const std::vector<std::string> one = TellProblems(Problems(kMostProblemsTold + 1, 0), "my show");
  ASSERT_EQ(one.size(), kMostProblemsTold + 1);
  EXPECT_EQ(one[kMostProblemsTold - 1], "19");
  EXPECT_EQ(one.back(), "and 1 more problem; \"orbel check my show\" looks at every song");
  EXPECT_EQ(TellProblems(Problems(2000, 0), "show").back(),
            "and 1980 more problems; \"orbel check show\" looks at every song");
}

TEST(ToldProblems, NoErrorIsHiddenByWarnings) {
  const std::vector<std::string> told = TellProblems(Problems(1, 100), "show");
  ASSERT_EQ(told.size(), kMostProblemsTold + 2);
  EXPECT_EQ(told[kMostProblemsTold - 1], "warning: 19");
  EXPECT_EQ(told[kMostProblemsTold], "100");
  EXPECT_EQ(told.back(), "and 80 more warnings; \"orbel check show\" looks at every song");
}

}  // namespace
}  // namespace orbel::host
