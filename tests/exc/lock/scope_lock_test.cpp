#include "exc/lock/scope_lock.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/exc/lock/spy_lock.h"
#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

namespace {

// Shows the members that derived classes see.
class OpenScopeLock : public exc::ScopeLock {
 public:
  using exc::ScopeLock::ScopeLock;
  using exc::ScopeLockBase::givenUp_;
  using exc::ScopeLockBase::held_;
  using exc::ScopeLockBase::keepsLock_;
  using exc::ScopeLockBase::lent_;
};

constexpr const char* kNotUnlocked = "ScopeLock has not been unlocked.";
constexpr const char* kReleased = "ScopeLock has already been released";

}  // namespace

TEST(ScopeLock, TakesTheLockAndGivesItUpAtTheEndOfTheScope) {
  SpyLock spy;
  {
    exc::ScopeLock lock(spy);
    EXPECT_EQ(spy.calls, Calls{"Lock"});
  }
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock"}));
}

TEST(ScopeLock, TakesAPointerAndAPointerToConstToo) {
  SpyLock spy;
  const SpyLock& constSpy = spy;
  {
    exc::ScopeLock lock(&spy);
    exc::ScopeLock again(&constSpy);
    EXPECT_EQ(spy.depth, 2);
  }
  EXPECT_EQ(spy.depth, 0);
}

TEST(ScopeLock, StartsHoldingItsLockWithTheOtherFieldsClear) {
  SpyLock spy;
  OpenScopeLock lock(spy);
  EXPECT_EQ(lock.held_, &spy);
  EXPECT_EQ(lock.lent_, nullptr);
  EXPECT_EQ(lock.givenUp_, nullptr);
  EXPECT_FALSE(lock.keepsLock_);
}

TEST(ScopeLock, GivesNothingUpWhenTheLockCouldNotBeTaken) {
  SpyLock spy;
  spy.failLock = true;
  EXPECT_THROW(exc::ScopeLock lock(spy), std::runtime_error);
  EXPECT_EQ(spy.calls, Calls{"Lock"});
}

// A lock that was never given up cannot be taken again; after Unlock() it can, once.
TEST(ScopeLock, LockThrowsUnlessUnlockedAndSucceedsOnceAfterwards) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.Lock(); }, kNotUnlocked));
  lock.Unlock();
  EXPECT_EQ(spy.depth, 0);
  lock.Lock();
  EXPECT_EQ(spy.depth, 1);
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.Lock(); }, kNotUnlocked));
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock", "Lock"}));
}

TEST(ScopeLock, LockThrowsWhenALockIsHeldBesidesTheOneGivenUp) {
  SpyLock spy;
  OpenScopeLock lock(spy);
  lock.givenUp_ = &spy;
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.Lock(); }, kNotUnlocked));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.TryLock(); }, kNotUnlocked));
}

TEST(ScopeLock, HoldsNothingWhenTakingItAgainFails) {
  SpyLock spy;
  {
    exc::ScopeLock lock(spy);
    lock.Unlock();
    spy.failLock = true;
    EXPECT_THROW(lock.Lock(), std::runtime_error);
  }
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock", "Lock"}));
}

TEST(ScopeLock, UnlockOnAReleasedScopeLockDoesNothing) {
  SpyLock spy;
  {
    exc::ScopeLock lock(spy);
    lock.Unlock();
    lock.Unlock();
  }
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock"}));
}

TEST(ScopeLock, TryLockThrowsUnlessUnlocked) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.TryLock(); }, kNotUnlocked));
}

TEST(ScopeLock, TryLockThatFailsLeavesTheLockGivenUp) {
  SpyLock spy;
  OpenScopeLock lock(spy);
  lock.Unlock();
  spy.tryLockResult = false;
  EXPECT_FALSE(lock.TryLock());
  EXPECT_EQ(lock.held_, nullptr);
  EXPECT_EQ(lock.givenUp_, &spy);
  spy.tryLockResult = true;
  EXPECT_TRUE(lock.TryLock());
  EXPECT_EQ(lock.held_, &spy);
  EXPECT_EQ(lock.givenUp_, nullptr);
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock", "TryLock", "TryLock"}));
}

TEST(ScopeLock, GetMutexAndThePassThroughGoToTheHeldLock) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  int argument = 0;
  EXPECT_EQ(lock.get_mutex(), &spy.mutex);
  lock.ForwardArgument(&argument);
  EXPECT_EQ(spy.lastArgument, &argument);
}

TEST(ScopeLock, GetMutexOnAReleasedScopeLockThrows) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  lock.Unlock();
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.get_mutex(); }, kReleased));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.ForwardArgument(nullptr); }, kReleased));
  EXPECT_TRUE(ThrowsWithText<std::logic_error>([&] { lock.GetLock(); }, kReleased));
}

TEST(ScopeLock, ThePassThroughWithoutArgumentsReachesNobody) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  lock.Forward();
  EXPECT_EQ(spy.calls, Calls{"Lock"});
}

// The last operation is not an accessor here.
TEST(ScopeLock, TheLastOperationTakesTheHeldLock) {
  SpyLock spy;
  exc::ScopeLock lock(spy);
  EXPECT_EQ(lock.GetLock(), &spy);
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Lock"}));
}

namespace {

class CountingScopeLock : public exc::ScopeLock {
 public:
  using exc::ScopeLock::ScopeLock;
  exc::ExLock* GetLock() override {
    ++acquisitions;
    return exc::ScopeLock::GetLock();
  }
  int acquisitions = 0;
};

}  // namespace

TEST(ScopeLock, LockAcquiresThroughTheLastOperation) {
  SpyLock spy;
  CountingScopeLock lock(spy);
  lock.Unlock();
  lock.Lock();
  EXPECT_EQ(lock.acquisitions, 1);
}

TEST(ScopeLock, DestructionSkipsTheUnlockWhenToldTo) {
  SpyLock spy;
  {
    OpenScopeLock lock(spy);
    lock.keepsLock_ = true;
  }
  EXPECT_EQ(spy.calls, Calls{"Lock"});
}

TEST(ScopeLock, StandsInForItsLockInAnotherScopeLock) {
  SpyLock spy;
  exc::ScopeLock outer(spy);
  outer.Unlock();
  {
    exc::ScopeLock inner(static_cast<exc::ExLock&>(outer));
    EXPECT_EQ(spy.depth, 1);
  }
  EXPECT_EQ(spy.depth, 0);
}

TEST(ScopeLockDeathTest, DestructionEndsTheProgramWhenUnlockThrows) {
  const auto destroy = [] {
    SpyLock spy;
    exc::ScopeLock lock(spy);
    spy.failUnlock = true;
  };
  EXPECT_DEATH(destroy(), "terminate called");
}
