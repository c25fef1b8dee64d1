#include "exc/flag/ex_flag.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "exc/lock/scope_lock.h"
#include "tests/exc/condition/condition_calls.h"
#include "tests/exc/flag/watched_flag.h"
#include "tests/support/wait_until.h"

using test_support::WaitUntil;

namespace {

class ExFlagTest : public testing::Test {
 protected:
  ExFlagTest() { TheConditionCalls().Reset(); }

  int Signals() const { return TheConditionCalls().signals + TheConditionCalls().broadcasts; }

  WatchedFlag flag_{"ExFlagTest"};
};

}  // namespace

TEST_F(ExFlagTest, StartsClearWithoutAReason) {
  EXPECT_FALSE(flag_.GetIsSet());
  EXPECT_EQ(flag_.GetString(), "");
}

TEST_F(ExFlagTest, SetKeepsTheReasonFromBefore) {
  flag_.Set("12");
  flag_.Set();
  EXPECT_TRUE(flag_.GetIsSet());
  EXPECT_EQ(flag_.GetString(), "12");
}

TEST_F(ExFlagTest, CancelClearsTheFlagAndItsReason) {
  flag_.Set("12");
  flag_.Cancel();
  EXPECT_FALSE(flag_.GetIsSet());
  EXPECT_EQ(flag_.GetString(), "");
}

TEST_F(ExFlagTest, OnlyCancelSignals) {
  flag_.Set();
  flag_.Set("12");
  EXPECT_EQ(Signals(), 0);
  flag_.Cancel();
  EXPECT_EQ(TheConditionCalls().signals, 1);
  EXPECT_EQ(TheConditionCalls().broadcasts, 0);
  flag_.Cancel();
  EXPECT_EQ(TheConditionCalls().signals, 2) << "also when it is not set";
}

TEST_F(ExFlagTest, AThreadNeverWaitsForItsOwnFlag) {
  flag_.Set("12");
  flag_.WaitForCancel();
  EXPECT_EQ(flag_.Waits(), 0);
  EXPECT_TRUE(flag_.GetIsSet());
}

TEST_F(ExFlagTest, WaitOnAFlagThatIsNotSetReturnsAtOnce) {
  flag_.WaitForCancel();
  EXPECT_EQ(flag_.Waits(), 0);
}

TEST_F(ExFlagTest, WaitOnAFlagThatAnotherThreadSetAndCancelledReturnsAtOnce) {
  std::thread([&] {
    flag_.Set();
    flag_.Cancel();
  }).join();
  flag_.WaitForCancel();
  EXPECT_EQ(flag_.Waits(), 0);
}

TEST_F(ExFlagTest, TheLastSetterCounts) {
  std::thread([&] { flag_.Set("of the other thread"); }).join();
  flag_.Set();
  flag_.WaitForCancel();
  EXPECT_EQ(flag_.Waits(), 0);
}

TEST_F(ExFlagTest, WaiterReturnsWhenTheOtherThreadCancels) {
  flag_.Set("12");
  std::atomic<bool> returned{false};
  std::thread waiter([&] {
    flag_.WaitForCancel();
    returned = true;
  });
  ASSERT_TRUE(WaitUntil([&] { return flag_.Waits() == 1; }));
  EXPECT_FALSE(returned);
  flag_.Cancel();
  waiter.join();
  EXPECT_FALSE(flag_.GetIsSet());
}

// A loop that tests the flag again would wait here for ever.
TEST_F(ExFlagTest, WaitsForASingleSignalAndDoesNotLookAgain) {
  flag_.Set();
  std::thread waiter([&] { flag_.WaitForCancel(); });
  ASSERT_TRUE(WaitUntil([&] { return flag_.Waits() == 1; }));
  {
    exc::ScopeLock lock(flag_);
    flag_.Cancel();
    flag_.Set("again");
  }
  waiter.join();
  EXPECT_EQ(flag_.Waits(), 1);
  EXPECT_TRUE(flag_.GetIsSet());
  EXPECT_EQ(flag_.GetString(), "again");
}

TEST_F(ExFlagTest, GettersWorkWhileTheCallerHoldsTheLock) {
  flag_.Set("12");
  exc::ScopeLock lock(flag_);
  EXPECT_TRUE(flag_.GetIsSet());
  EXPECT_EQ(flag_.GetString(), "12");
}

TEST_F(ExFlagTest, EveryOperationWaitsForTheHolderOfTheLock) {
  const std::vector<std::function<void()>> operations{
      [&] { flag_.Set(); },      [&] { flag_.Set("12"); },   [&] { flag_.Cancel(); },
      [&] { flag_.GetIsSet(); }, [&] { flag_.GetString(); }, [&] { flag_.WaitForCancel(); },
  };
  for (const std::function<void()>& operation : operations) {
    flag_.Cancel();
    std::atomic<bool> done{false};
    flag_.Lock();
    const int attempts = flag_.LockAttempts();
    std::thread other([&] {
      operation();
      done = true;
    });
    EXPECT_TRUE(WaitUntil([&] { return flag_.LockAttempts() == attempts + 1; }));
    EXPECT_FALSE(done);
    flag_.Unlock();
    other.join();
  }
}

// One thread works under the flag, the other waits for it: as loader and caller do.
TEST_F(ExFlagTest, HandsWorkOverBetweenTwoThreads) {
  constexpr int kRounds = 200;
  for (int round = 0; round < kRounds; ++round) {
    int work = 0;
    std::atomic<bool> isSet{false};
    std::thread worker([&] {
      flag_.Set(std::to_string(round));
      isSet = true;
      work = round;
      flag_.Cancel();
    });
    ASSERT_TRUE(WaitUntil([&] { return isSet.load(); }));
    flag_.WaitForCancel();
    EXPECT_EQ(work, round);
    worker.join();
  }
}
