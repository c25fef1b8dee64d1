#include "suite/utility/lock_impl.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "exc/result/noerr_error.h"
#include "tests/reference_suite/utility/mutex_calls.h"
#include "tests/support/throws_with_text.h"

using test_support::ThrowsWithText;

// ThreadSanitizer ends the program at a misuse before the system's answer can be looked at.
#if defined(__SANITIZE_THREAD__)
#define ORBEL_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORBEL_THREAD_SANITIZER 1
#endif
#endif

namespace {

template <typename Action>
void OnAnotherThread(Action action) {
  std::thread(action).join();
}

bool TryLockOnAnotherThread(exc::LockImpl_& lock) {
  bool taken = false;
  OnAnotherThread([&] {
    taken = lock.TryLock();
    if (taken) lock.Unlock();
  });
  return taken;
}

}  // namespace

template <typename T>
class EveryLockImpl : public testing::Test {
 protected:
  T lock_{std::string("EveryLockImpl")};
};

using LockImpls = testing::Types<exc::LockImpl_, exc::RLockImpl_>;
TYPED_TEST_SUITE(EveryLockImpl, LockImpls);

TYPED_TEST(EveryLockImpl, KnowsItsName) {
  EXPECT_EQ(this->lock_.GetName(), "EveryLockImpl");
}

TYPED_TEST(EveryLockImpl, AWaiterLendsItsPriorityToTheHolder) {
  EXPECT_EQ(TheMutexCalls().lastProtocol, PTHREAD_PRIO_INHERIT);
}

TYPED_TEST(EveryLockImpl, OwnsOneMutex) {
  const int inits = TheMutexCalls().inits;
  const int destroys = TheMutexCalls().destroys;
  {
    TypeParam lock("OwnsOneMutex");
    EXPECT_EQ(TheMutexCalls().inits, inits + 1);
  }
  EXPECT_EQ(TheMutexCalls().inits, inits + 1);
  EXPECT_EQ(TheMutexCalls().destroys, destroys + 1);
}

TYPED_TEST(EveryLockImpl, IsHeldByOneThreadAtATime) {
  this->lock_.Lock();
  EXPECT_FALSE(TryLockOnAnotherThread(this->lock_));
  this->lock_.Unlock();
  EXPECT_TRUE(TryLockOnAnotherThread(this->lock_));
}

TYPED_TEST(EveryLockImpl, TryLockTakesIt) {
  ASSERT_TRUE(this->lock_.TryLock());
  EXPECT_FALSE(TryLockOnAnotherThread(this->lock_));
  this->lock_.Unlock();
}

TYPED_TEST(EveryLockImpl, GuardsACounterOfFourThreads) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 5000;
  int counter = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        this->lock_.Lock();
        ++counter;
        this->lock_.Unlock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, kThreads * kRounds);
}

TYPED_TEST(EveryLockImpl, LendsItsMutexToACondition) {
  pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
  bool ready = false;
  std::thread other([&] {
    this->lock_.Lock();
    ready = true;
    pthread_cond_signal(&condition);
    this->lock_.Unlock();
  });
  this->lock_.Lock();
  while (!ready) pthread_cond_wait(&condition, this->lock_.get_mutex());
  this->lock_.Unlock();
  other.join();
  EXPECT_TRUE(ready);
}

TYPED_TEST(EveryLockImpl, PassThroughsDoNothing) {
  this->lock_.ForwardArgument(nullptr);
  this->lock_.Forward();
  EXPECT_TRUE(TryLockOnAnotherThread(this->lock_));
}

#if !defined(ORBEL_THREAD_SANITIZER)
TYPED_TEST(EveryLockImpl, GivingUpWhatAnotherThreadHoldsIsAnError) {
  this->lock_.Lock();
  OnAnotherThread([&] {
    EXPECT_TRUE(ThrowsWithText<exc::NOERRError>(
        [&] { this->lock_.Unlock(); },
        "pthread_mutex_unlock of lock \"EveryLockImpl\": 1 Operation not permitted"));
  });
  this->lock_.Unlock();
}
#endif

TYPED_TEST(EveryLockImpl, AMutexThatCannotBeMadeIsAnError) {
  TheMutexCalls().failure = ENOMEM;
  EXPECT_TRUE(ThrowsWithText<exc::NOERRError>(
      [] { TypeParam lock("Unmade"); }, "pthread_mutex_init of lock \"Unmade\": 12 Cannot allocate memory"));
}

#if !defined(ORBEL_THREAD_SANITIZER)
TEST(LockImpl, TakingItTwiceIsAnErrorAndNotAWaitForEver) {
  exc::LockImpl_ lock("Twice");
  lock.Lock();
  EXPECT_TRUE(ThrowsWithText<exc::NOERRError>(
      [&] { lock.Lock(); }, "pthread_mutex_lock of lock \"Twice\": 35 Resource deadlock avoided"));
  EXPECT_FALSE(lock.TryLock());
  lock.Unlock();
  EXPECT_TRUE(TryLockOnAnotherThread(lock)) << "the refused ones left nothing behind";
}
#endif

TEST(RLockImpl, IsRecursive) {
  exc::RLockImpl_ lock("Recursive");
  EXPECT_EQ(TheMutexCalls().lastType, PTHREAD_MUTEX_RECURSIVE);
  lock.Lock();
  lock.Lock();
  EXPECT_TRUE(lock.TryLock());
  lock.Unlock();
  lock.Unlock();
  EXPECT_FALSE(TryLockOnAnotherThread(lock)) << "given up twice, taken three times";
  lock.Unlock();
  EXPECT_TRUE(TryLockOnAnotherThread(lock));
}
