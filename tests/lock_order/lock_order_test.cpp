#include "tests/support/lock_order/lock_order.h"

#include <gtest/gtest.h>

#include <thread>

#include "exc/condition/condition.h"
#include "exc/lock/lockable.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"

namespace lock_order = test_support::lock_order;

namespace {

using Names = std::vector<std::string>;

class LockOrder : public testing::Test {
 protected:
  LockOrder() { lock_order::Reset(); }
  ~LockOrder() override { lock_order::Reset(); }

  static Names Seen() {
    Names seen;
    for (const lock_order::Nesting& nesting : lock_order::GetNestings()) {
      std::string text = nesting.outer + " > " + nesting.inner;
      for (const std::string& name : nesting.behind) text += " behind " + name;
      seen.push_back(text);
    }
    return seen;
  }

  exc::RLockable a_{"A"};
  exc::Lockable b_{"B"};
  exc::Lockable c_{"C"};
};

TEST_F(LockOrder, EveryLockThatIsHeldMakesAPairWithTheOneThatIsTaken) {
  {
    const exc::ScopeLock a(a_);
    const exc::ScopeLock b(b_);
    const exc::ScopeLock c(c_);
  }
  EXPECT_EQ(Seen(), (Names{"A > B", "A > C behind B", "B > C behind A"}));
}

TEST_F(LockOrder, WhatIsGivenUpIsHeldNoMore) {
  exc::ScopeLock a(a_);
  a.Unlock();
  const exc::ScopeLock b(b_);
  EXPECT_EQ(Seen(), Names());
}

TEST_F(LockOrder, ARecursiveLockTakenAgainIsNoPairAndHeldUntilItIsGivenUpAsOften) {
  const exc::ScopeLock outer(a_);
  { const exc::ScopeLock inner(a_); }
  const exc::ScopeLock b(b_);
  EXPECT_EQ(Seen(), Names{"A > B"});
}

TEST_F(LockOrder, TwoLocksOfOneNameAreAPair) {
  exc::Lockable other{"B"};
  const exc::ScopeLock b(b_);
  const exc::ScopeLock second(other);
  EXPECT_EQ(Seen(), Names{"B > B"});
}

TEST_F(LockOrder, ALockThatWasTriedSuccessfullyIsHeld) {
  ASSERT_TRUE(b_.TryLock());
  { const exc::ScopeLock c(c_); }
  std::thread([&] { EXPECT_FALSE(b_.TryLock()); }).join();
  b_.Unlock();
  EXPECT_EQ(Seen(), Names{"B > C"});
}

TEST_F(LockOrder, OfTheLocksBehindAPairThoseStayThatWereHeldEveryTime) {
  {
    const exc::ScopeLock a(a_);
    const exc::ScopeLock b(b_);
    const exc::ScopeLock c(c_);
  }
  {
    const exc::ScopeLock b(b_);
    const exc::ScopeLock c(c_);
  }
  EXPECT_EQ(Seen(), (Names{"A > B", "A > C behind B", "B > C"}));
}

TEST_F(LockOrder, EachThreadHoldsItsOwn) {
  const exc::ScopeLock a(a_);
  std::thread([&] { const exc::ScopeLock b(b_); }).join();
  EXPECT_EQ(Seen(), Names());
}

TEST_F(LockOrder, AWaitMayHoldNothingButItsOwnLockOnce) {
  exc::Condition condition;
  const auto wait = [&] {
    exc::ScopeLock own(a_);
    std::thread signal([&] { condition.Signal(a_); });
    condition.WaitWhileLocked(own);
    own.Unlock();
    signal.join();
  };
  wait();
  EXPECT_EQ(lock_order::GetBadWaits(), Names());
  {
    const exc::ScopeLock b(b_);
    wait();
  }
  EXPECT_EQ(lock_order::GetBadWaits(), Names{"a wait that gives up \"A\" keeps \"B\""});
}

TEST_F(LockOrder, AWaitWithAMutexThatHasNoNameMayHoldNoneThatHas) {
  pthread_mutex_t nameless = PTHREAD_MUTEX_INITIALIZER;
  lock_order::WaitsWith(&nameless);
  EXPECT_EQ(lock_order::GetBadWaits(), Names());
  const exc::ScopeLock a(a_);
  lock_order::WaitsWith(&nameless);
  EXPECT_EQ(lock_order::GetBadWaits(), Names{"a wait that gives up no named lock keeps \"A\""});
}

TEST_F(LockOrder, AWaitThatGivesUpOneLevelOfTwoIsBad) {
  exc::Condition condition;
  const exc::ScopeLock once(a_);
  lock_order::WaitsWith(a_.get_mutex());
  EXPECT_EQ(lock_order::GetBadWaits(), Names());
  const exc::ScopeLock twice(a_);
  lock_order::WaitsWith(a_.get_mutex());
  EXPECT_EQ(lock_order::GetBadWaits(), Names{"a wait gives up \"A\" once, which is held more often"});
}

TEST_F(LockOrder, AJoinMayHoldNothing) {
  const auto startAndJoin = [] {
    pthread_t thread{};
    ASSERT_EQ(pthread_create(
                  &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr),
              0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
  };
  startAndJoin();
  EXPECT_EQ(lock_order::GetBadWaits(), Names());
  const exc::ScopeLock c(c_);
  startAndJoin();
  EXPECT_EQ(lock_order::GetBadWaits(), Names{"a thread is joined while \"C\" is held"});
}

TEST_F(LockOrder, APairThatIsNotExpectedIsWrittenWithItsStackOnce) {
  lock_order::Expect({{"A", "B"}});
  testing::internal::CaptureStderr();
  for (int i = 0; i < 2; ++i) {
    const exc::ScopeLock a(a_);
    const exc::ScopeLock b(b_);
    const exc::ScopeLock c(c_);
  }
  const std::string text = testing::internal::GetCapturedStderr();
  const std::string line = "lock order: \"C\" is taken while \"A\" is held\n";
  EXPECT_NE(text.find(line), std::string::npos) << text;
  EXPECT_EQ(text.find(line, text.find(line) + 1), std::string::npos) << text;
  EXPECT_EQ(text.find("\"B\" is taken"), std::string::npos) << text;
  EXPECT_NE(text.find("lock_order_test"), std::string::npos) << "a frame of this program: " << text;
}

}  // namespace
