#include "exc/lock/internal_lockable.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using exc::exc_internal::internal_lockable;
using internal_scope_lock = internal_lockable::internal_scope_lock;

namespace {

class SpyInternalLock : public internal_lockable {
 public:
  void lock() override { calls.push_back("lock"); }
  void unlock() override {
    calls.push_back("unlock");
    if (failUnlock) throw std::runtime_error("internal lock cannot be given up");
  }
  std::vector<std::string> calls;
  bool failUnlock = false;
};

}  // namespace

TEST(InternalLockable, IsReadyBeforeAnyConstructorRuns) {
  static constinit internal_lockable lockable;
  lockable.lock();
  lockable.unlock();
}

TEST(InternalScopeLock, LocksInTheConstructorAndUnlocksInTheDestructor) {
  SpyInternalLock spy;
  {
    internal_scope_lock lock(&spy);
    EXPECT_EQ(spy.calls, (std::vector<std::string>{"lock"}));
  }
  EXPECT_EQ(spy.calls, (std::vector<std::string>{"lock", "unlock"}));
}

TEST(InternalScopeLock, GuardsACounterOfTwoThreads) {
  constexpr int kRounds = 10000;
  internal_lockable lockable;
  int counter = 0;
  const auto count = [&] {
    for (int round = 0; round < kRounds; ++round) {
      internal_scope_lock lock(&lockable);
      ++counter;
    }
  };
  std::thread other(count);
  count();
  other.join();
  EXPECT_EQ(counter, 2 * kRounds);
}

TEST(InternalScopeLockDeathTest, DestructionEndsTheProgramWhenUnlockThrows) {
  const auto destroy = [] {
    SpyInternalLock spy;
    internal_scope_lock lock(&spy);
    spy.failUnlock = true;
  };
  EXPECT_DEATH(destroy(), "terminate called");
}
