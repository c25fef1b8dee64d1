#include "exc/lock/scope_unlock.h"

#include <gtest/gtest.h>

#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "tests/exc/lock/spy_lock.h"

TEST(ScopeUnlock, GivesTheLockUpAndTakesItAgainAtTheEndOfTheScope) {
  SpyLock spy;
  {
    exc::ScopeUnlock open(spy);
    EXPECT_EQ(spy.calls, Calls{"Unlock"});
  }
  EXPECT_EQ(spy.calls, (Calls{"Unlock", "Lock"}));
}

TEST(ScopeUnlock, OpensAScopedLockToo) {
  SpyLock spy;
  {
    exc::ScopeLock lock(spy);
    {
      exc::ScopeUnlock open(lock);
      EXPECT_EQ(spy.depth, 0);
    }
    EXPECT_EQ(spy.depth, 1);
  }
  EXPECT_EQ(spy.calls, (Calls{"Lock", "Unlock", "Lock", "Unlock"}));
}

TEST(ScopeUnlockDeathTest, DestructionEndsTheProgramWhenLockThrows) {
  const auto destroy = [] {
    SpyLock spy;
    exc::ScopeUnlock open(spy);
    spy.failLock = true;
  };
  EXPECT_DEATH(destroy(), "terminate called");
}
