#include "exc/lock/call_unlocked.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "exc/lock/rlockable.h"
#include "tests/exc/lock/spy_lock.h"
#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

namespace {

class OpenScopeLock : public exc::ScopeLock {
 public:
  using exc::ScopeLock::ScopeLock;
  using exc::ScopeLockBase::givenUp_;
  using exc::ScopeLockBase::held_;
  using exc::ScopeLockBase::lent_;
};

}  // namespace

TEST(CallUnlocked, CallsWithTheLockGivenUpAndTakesItAgain) {
  SpyLock spy;
  OpenScopeLock lock(spy);
  exc::CallUnlocked(lock, [&] {
    EXPECT_EQ(spy.depth, 0);
    EXPECT_EQ(lock.held_, nullptr);
    EXPECT_EQ(lock.lent_, &spy);
    EXPECT_EQ(lock.givenUp_, nullptr);
    spy.calls.push_back("callable");
  });
  EXPECT_EQ(lock.held_, &spy);
  EXPECT_EQ(spy.depth, 1);
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock", "callable", "Lock"}));
}

TEST(CallUnlocked, CanBeUsedAgainAndAgain) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  int runs = 0;
  exc::CallUnlocked(lock, [&] { ++runs; });
  exc::CallUnlocked(lock, [&] { ++runs; });
  EXPECT_EQ(runs, 2);
  EXPECT_EQ(spy.depth, 1);
}

TEST(CallUnlocked, RefusesAScopeLockThatHoldsNoLock) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  lock.Unlock();
  bool called = false;
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { exc::CallUnlocked(lock, [&] { called = true; }); },
                                               "Attempted to release a null lock."));
  EXPECT_FALSE(called);
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock"}));
}

TEST(CallUnlocked, RefusesToNest) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  exc::CallUnlocked(lock, [&] {
    EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { exc::CallUnlocked(lock, [] {}); },
                                                 "Attempted to release a null lock."));
  });
  EXPECT_EQ(spy.depth, 1);
}

TEST(CallUnlocked, ThrowsWhenThereIsNoLockToReturnTo) {
  SpyLock spy;
  {
    OpenScopeLock lock(spy);
    EXPECT_TRUE(ThrowsWithText<std::logic_error>(
        [&] { exc::CallUnlocked(lock, [&] { lock.lent_ = nullptr; }); }, "Attempted to obtain a null lock."));
    EXPECT_EQ(lock.held_, nullptr);
  }
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock"}));
}

TEST(CallUnlocked, DoesNotTakeTheLockAgainWhenTheCallableThrows) {
  SpyLock spy;
  {
    OpenScopeLock lock(spy);
    const auto callUnlocked = [&] { exc::CallUnlocked(lock, [] { throw std::out_of_range("callable"); }); };
    EXPECT_TRUE(ThrowsWithText<std::out_of_range>(callUnlocked, "callable"));
    EXPECT_EQ(lock.held_, nullptr);
    EXPECT_TRUE(
        ThrowsWithText<std::logic_error>([&] { lock.get_mutex(); }, "ScopeLock has already been released"));
    EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.Lock(); }, "ScopeLock has not been unlocked."));
  }
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock"}));
}

TEST(CallUnlocked, LetsAnotherThreadInWhileTheCallableRuns) {
  exc::RLockable lockable("CallUnlockedTest");
  bool entered = false;
  exc::ScopeLock lock(lockable);
  exc::CallUnlocked(lock, [&] {
    std::thread([&] {
      exc::ScopeLock other(lockable);
      entered = true;
    }).join();
  });
  EXPECT_TRUE(entered);
}
