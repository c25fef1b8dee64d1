#include "exc/lock/lockable.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "exc/lock/basic_lock.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "tests/exc/lock/spy_lock.h"

namespace {

bool TryLockOnAnotherThread(exc::ExLock& lock) {
  bool taken = false;
  std::thread([&] {
    taken = lock.TryLock();
    if (taken) lock.Unlock();
  }).join();
  return taken;
}

// Stands in for a lock of the test.
class Lent : public exc::BasicLockable {
 public:
  exc::ExLock* GetLock() override { return &spy; }
  SpyLock spy;
};

}  // namespace

TEST(BasicLockable, ForwardsEveryOperationToItsLock) {
  Lent lockable;
  int argument = 0;
  lockable.Lock();
  EXPECT_TRUE(lockable.TryLock());
  lockable.spy.tryLockResult = false;
  EXPECT_FALSE(lockable.TryLock());
  EXPECT_EQ(lockable.get_mutex(), &lockable.spy.mutex);
  lockable.ForwardArgument(&argument);
  lockable.Forward();
  lockable.Unlock();
  EXPECT_EQ(lockable.spy.calls,
            (Calls{"Lock", "TryLock", "TryLock", "get_mutex", "ForwardArgument", "Forward", "Unlock"}));
  EXPECT_EQ(lockable.spy.lastArgument, &argument);
}

// Every kind of lock that the family offers, by its interface alone.
template <typename T>
class NamedLock : public testing::Test {
 protected:
  T lock_{std::string("NamedLockTest")};
};

using NamedLocks =
    testing::Types<exc::Lockable, exc::RLockable, exc::basic_lock<false>, exc::basic_rlock<false>>;
TYPED_TEST_SUITE(NamedLock, NamedLocks);

TYPED_TEST(NamedLock, IsTakenByOneThreadAtATime) {
  exc::ExLock& lock = this->lock_;
  EXPECT_TRUE(TryLockOnAnotherThread(lock));
  lock.Lock();
  EXPECT_FALSE(TryLockOnAnotherThread(lock));
  lock.Unlock();
  EXPECT_TRUE(TryLockOnAnotherThread(lock));
}

TYPED_TEST(NamedLock, TryLockTakesIt) {
  exc::ExLock& lock = this->lock_;
  ASSERT_TRUE(lock.TryLock());
  EXPECT_FALSE(TryLockOnAnotherThread(lock));
  lock.Unlock();
}

TYPED_TEST(NamedLock, GuardsACounterOfFourThreads) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 5000;
  int counter = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        exc::ScopeLock lock(this->lock_);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, kThreads * kRounds);
}

TYPED_TEST(NamedLock, LendsOneMutexForItsWholeLife) {
  pthread_mutex_t* const mutex = this->lock_.get_mutex();
  ASSERT_NE(mutex, nullptr);
  EXPECT_EQ(this->lock_.get_mutex(), mutex);
}

TEST(Lockable, IsALockBecauseOfTheOneItHolds) {
  exc::Lockable lockable("LockableTest");
  EXPECT_NE(dynamic_cast<exc::basic_lock<false>*>(lockable.GetLock()), nullptr);
  EXPECT_EQ(dynamic_cast<exc::basic_rlock<false>*>(lockable.GetLock()), nullptr);
  EXPECT_EQ(lockable.GetLock()->get_mutex(), lockable.get_mutex());
}

TEST(RLockable, HoldsARecursiveLock) {
  exc::RLockable lockable("RLockableTest");
  EXPECT_NE(dynamic_cast<exc::basic_rlock<false>*>(lockable.GetLock()), nullptr);
  lockable.Lock();
  lockable.Lock();
  EXPECT_TRUE(lockable.TryLock());
  lockable.Unlock();
  lockable.Unlock();
  EXPECT_FALSE(TryLockOnAnotherThread(lockable)) << "given up twice, taken three times";
  lockable.Unlock();
  EXPECT_TRUE(TryLockOnAnotherThread(lockable));
}
