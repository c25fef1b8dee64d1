#include "exc/flag/ex_scope_flag.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/exc/condition/condition_calls.h"

namespace {

class ExScopeFlagTest : public testing::Test {
 protected:
  ExScopeFlagTest() { TheConditionCalls().Reset(); }

  int Signals() const { return TheConditionCalls().signals; }

  exc::ExFlag flag_{"ExScopeFlagTest"};
};

class StubbornFlag : public exc::ExFlag {
 public:
  using exc::ExFlag::ExFlag;
  void Cancel() override { throw std::runtime_error("flag cannot be cancelled"); }
};

}  // namespace

TEST_F(ExScopeFlagTest, KeepsTheFlagSetWhileItLives) {
  {
    exc::ExScopeFlag scope(flag_);
    EXPECT_TRUE(flag_.GetIsSet());
    EXPECT_EQ(flag_.GetString(), "");
  }
  EXPECT_FALSE(flag_.GetIsSet());
  EXPECT_EQ(Signals(), 1);
}

TEST_F(ExScopeFlagTest, SetsAReason) {
  exc::ExScopeFlag scope(flag_, "12");
  EXPECT_EQ(flag_.GetString(), "12");
}

TEST_F(ExScopeFlagTest, WithoutAReasonKeepsTheOneFromBefore) {
  flag_.Set("12");
  exc::ExScopeFlag scope(flag_);
  EXPECT_EQ(flag_.GetString(), "12");
}

TEST_F(ExScopeFlagTest, CancelledEarlyDoesNotSignalAgain) {
  {
    exc::ExScopeFlag scope(flag_);
    scope.Cancel();
    EXPECT_FALSE(flag_.GetIsSet());
    EXPECT_EQ(Signals(), 1);
    scope.Cancel();
  }
  EXPECT_EQ(Signals(), 1);
}

TEST_F(ExScopeFlagTest, DestroyedAfterTheFlagItselfWasCancelledDoesNotSignalAgain) {
  {
    exc::ExScopeFlag scope(flag_, "12");
    flag_.Cancel();
  }
  EXPECT_EQ(Signals(), 1);
}

// It asks whether the flag is set, not who has set it.
TEST_F(ExScopeFlagTest, CancelsAFlagThatWasSetAnewMeanwhile) {
  {
    exc::ExScopeFlag scope(flag_);
    scope.Cancel();
    flag_.Set("again");
  }
  EXPECT_FALSE(flag_.GetIsSet());
  EXPECT_EQ(Signals(), 2);
}

TEST(ExScopeFlagDeathTest, DestructionEndsTheProgramWhenCancelThrows) {
  const auto destroy = [] {
    StubbornFlag flag("StubbornFlag");
    exc::ExScopeFlag scope(flag);
  };
  EXPECT_DEATH(destroy(), "terminate called");
}
