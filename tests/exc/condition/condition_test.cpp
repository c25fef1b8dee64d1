#include "exc/condition/condition.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <thread>
#include <vector>

#include "exc/lock/lockable.h"
#include "exc/lock/rlockable.h"
#include "tests/exc/condition/condition_calls.h"
#include "tests/exc/lock/spy_lock.h"
#include "tests/support/wait_until.h"

using test_support::WaitUntil;

namespace {

class ConditionTest : public testing::Test {
 protected:
  ConditionTest() { calls_.Reset(); }
  ~ConditionTest() override { calls_.Reset(); }

  ConditionCalls& calls_ = TheConditionCalls();
};

// Threads that wait until `isOpen`, and how many have passed.
struct Gate {
  // Returns when all of them wait: they count themselves under the lock that only a wait gives up.
  void StartWaiters(int count) {
    for (int i = 0; i < count; ++i) threads.emplace_back([this] { Pass(); });
    ASSERT_TRUE(WaitUntil([&] {
      exc::ScopeLock lock(lockable);
      return waiting == count;
    }));
  }
  void Pass() {
    exc::ScopeLock lock(lockable);
    ++waiting;
    while (!isOpen) condition.WaitWhileLocked(lock);
    ++passed;
  }
  void Open() {
    exc::ScopeLock lock(lockable);
    isOpen = true;
  }
  void JoinAll() {
    for (std::thread& thread : threads) thread.join();
  }

  exc::Lockable lockable{"Gate"};
  exc::Condition condition;
  bool isOpen = false;
  int waiting = 0;
  int passed = 0;
  std::vector<std::thread> threads;
};

}  // namespace

TEST_F(ConditionTest, IsInitialisedWithDefaultAttributesAndDestroyed) {
  {
    exc::Condition condition;
    EXPECT_EQ(calls_.inits, 1);
    EXPECT_EQ(calls_.initsWithAttributes, 0);
    EXPECT_EQ(calls_.destroys, 0);
  }
  EXPECT_EQ(calls_.destroys, 1);
}

TEST_F(ConditionTest, SignalHoldsTheLockAroundTheSignal) {
  SpyLock spy;
  exc::Condition condition;
  calls_.beforeWaking = [&] { spy.calls.push_back("waking"); };
  condition.Signal(spy);
  EXPECT_EQ(spy.calls, (Calls{"Lock", "waking", "Unlock"}));
  EXPECT_EQ(calls_.signals, 1);
  EXPECT_EQ(calls_.broadcasts, 0);
}

TEST_F(ConditionTest, BroadcastHoldsTheLockAroundTheBroadcast) {
  SpyLock spy;
  exc::Condition condition;
  calls_.beforeWaking = [&] { spy.calls.push_back("waking"); };
  condition.Broadcast<exc::ExLock>(spy);
  EXPECT_EQ(spy.calls, (Calls{"Lock", "waking", "Unlock"}));
  EXPECT_EQ(calls_.signals, 0);
  EXPECT_EQ(calls_.broadcasts, 1);
}

TEST_F(ConditionTest, SignalWhileLockedTakesNoLock) {
  exc::Condition condition;
  condition.SignalWhileLocked();
  EXPECT_EQ(calls_.signals, 1);
}

TEST_F(ConditionTest, WaitUsesTheMutexOfTheScopeLock) {
  SpyLock spy;
  exc::Condition condition;
  exc::ScopeLock lock(spy);
  calls_.result = EINVAL;  // nothing to wake us up
  condition.WaitWhileLocked<exc::ScopeLock>(lock);
  EXPECT_EQ(spy.calls, (Calls{"Lock", "get_mutex"}));
  EXPECT_EQ(calls_.waits, 1);
}

TEST_F(ConditionTest, IgnoresTheResultsOfTheSystem) {
  SpyLock spy;
  calls_.result = EINVAL;
  {
    exc::Condition condition;
    exc::ScopeLock lock(spy);
    EXPECT_NO_THROW(condition.WaitWhileLocked(lock));
    EXPECT_NO_THROW(condition.SignalWhileLocked());
    EXPECT_NO_THROW(condition.Signal(spy));
    EXPECT_NO_THROW(condition.Broadcast(spy));
  }
  EXPECT_EQ(calls_.inits + calls_.destroys + calls_.waits + calls_.signals + calls_.broadcasts, 6);
}

TEST_F(ConditionTest, SignalWakesAWaiter) {
  Gate gate;
  gate.StartWaiters(1);
  gate.Open();
  gate.condition.Signal(gate.lockable);
  gate.JoinAll();
  EXPECT_EQ(gate.passed, 1);
}

TEST_F(ConditionTest, BroadcastWakesEveryWaiter) {
  Gate gate;
  gate.StartWaiters(4);
  gate.Open();
  gate.condition.Broadcast(gate.lockable);
  gate.JoinAll();
  EXPECT_EQ(gate.passed, 4);
}

TEST_F(ConditionTest, WaitsOnARecursiveLockHeldOnce) {
  exc::RLockable lockable("ConditionTest");
  exc::Condition condition;
  bool ready = false;
  std::thread other([&] {
    exc::ScopeLock lock(lockable);
    ready = true;
    condition.SignalWhileLocked();
  });
  {
    exc::ScopeLock lock(lockable);
    while (!ready) condition.WaitWhileLocked(lock);
  }
  other.join();
  EXPECT_TRUE(ready);
}
