#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exc/flag/ex_flag.h"
#include "exc/lock/basic_lock.h"
#include "exc/lock/lockable.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "tests/exc/lock_impl/recording_lock_impl.h"

using Calls = std::vector<std::string>;

namespace {

class LockForwarding : public testing::Test {
 protected:
  LockForwarding() {
    LockImplCalls().clear();
    TryLockAnswer() = true;
  }

  // Everything that a lock can be asked, once.
  void AskEverything(exc::ExLock& lock) {
    std::string argument = "argument";
    lock.Lock();
    lock.Unlock();
    EXPECT_TRUE(lock.TryLock());
    TryLockAnswer() = false;
    EXPECT_FALSE(lock.TryLock());
    EXPECT_EQ(lock.get_mutex(), lock.get_mutex());
    lock.ForwardArgument(&argument);
    lock.Forward();
  }

  const Calls everything_{"X: Lock",
                          "X: Unlock",
                          "X: TryLock",
                          "X: TryLock",
                          "X: get_mutex",
                          "X: get_mutex",
                          "X: ForwardArgument argument",
                          "X: Forward"};
};

Calls Between(const std::string& first, Calls calls, const Calls& last) {
  calls.insert(calls.begin(), first);
  calls.insert(calls.end(), last.begin(), last.end());
  return calls;
}

const Calls kPlainEnd{"X: destroyed"};
const Calls kRecursiveEnd{"X: destroyed as recursive", "X: destroyed"};

}  // namespace

TEST_F(LockForwarding, BasicLockMakesOnePlainImplementationAndAsksIt) {
  {
    exc::basic_lock<false> lock("X");
    AskEverything(lock);
  }
  EXPECT_EQ(LockImplCalls(), Between("X: made plain", everything_, kPlainEnd));
}

TEST_F(LockForwarding, BasicRLockMakesOneRecursiveImplementationAndAsksIt) {
  {
    exc::basic_rlock<false> lock("X");
    AskEverything(lock);
  }
  EXPECT_EQ(LockImplCalls(), Between("X: made recursive", everything_, kRecursiveEnd));
}

TEST_F(LockForwarding, LockableAsksThePlainLockThatItHolds) {
  {
    exc::Lockable lockable("X");
    AskEverything(lockable);
  }
  EXPECT_EQ(LockImplCalls(), Between("X: made plain", everything_, kPlainEnd));
}

TEST_F(LockForwarding, RLockableAsksTheRecursiveLockThatItHolds) {
  {
    exc::RLockable lockable("X");
    AskEverything(lockable);
  }
  EXPECT_EQ(LockImplCalls(), Between("X: made recursive", everything_, kRecursiveEnd));
}

TEST_F(LockForwarding, FlagIsARecursiveLockOfItsName) {
  exc::ExFlag flag("AudioPlayer_WaitForAudio");
  flag.Set();
  EXPECT_EQ(LockImplCalls(), (Calls{"AudioPlayer_WaitForAudio: made recursive",
                                    "AudioPlayer_WaitForAudio: Lock", "AudioPlayer_WaitForAudio: Unlock"}));
}

TEST_F(LockForwarding, ScopeLockReachesTheImplementationOnceEachWay) {
  exc::RLockable lockable("X");
  { exc::ScopeLock lock(lockable); }
  EXPECT_EQ(LockImplCalls(), (Calls{"X: made recursive", "X: Lock", "X: Unlock"}));
}
