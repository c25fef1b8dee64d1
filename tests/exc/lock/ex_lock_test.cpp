#include "exc/lock/ex_lock.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "exc/condition/condition.h"
#include "exc/flag/ex_flag.h"
#include "exc/flag/ex_scope_flag.h"
#include "exc/lock/basic_lock.h"
#include "exc/lock/internal_lockable.h"
#include "exc/lock/lockable.h"
#include "exc/lock/rlockable.h"
#include "exc/lock/scope_lock.h"
#include "exc/lock/scope_unlock.h"
#include "exc/thread/ex_thread_id.h"
#include "tests/exc/lock/spy_lock.h"
#include "tests/support/slot_index.h"

using test_support::SlotIndex;

// The order is part of the binary contract, and the same in the whole family.
template <typename T>
class SlotOrder : public testing::Test {};

using LockFamily =
    testing::Types<exc::ExLock, exc::BasicLockable, exc::Lockable, exc::RLockable, exc::basic_lock<false>,
                   exc::basic_rlock<false>, exc::ScopeLockBase, exc::ScopeLock, exc::ExFlag>;
TYPED_TEST_SUITE(SlotOrder, LockFamily);

TYPED_TEST(SlotOrder, IsLockUnlockTryLockDestructorGetMutexPassThroughsGetLock) {
  EXPECT_EQ(SlotIndex(&TypeParam::Lock), 0u);
  EXPECT_EQ(SlotIndex(&TypeParam::Unlock), 1u);
  EXPECT_EQ(SlotIndex(&TypeParam::TryLock), 2u);
  // 3 and 4: the destructor's two entries.
  EXPECT_EQ(SlotIndex(&TypeParam::get_mutex), 5u);
  EXPECT_EQ(SlotIndex(&TypeParam::ForwardArgument), 6u);
  EXPECT_EQ(SlotIndex(&TypeParam::Forward), 7u);
  EXPECT_EQ(SlotIndex(&TypeParam::GetLock), 8u);
}

TEST(SlotIndex, HasNoneForAnOperationThatIsNotVirtual) {
  struct Plain {
    void Do() {}
  };
  EXPECT_EQ(SlotIndex(&Plain::Do), std::nullopt);
}

TEST(LockFamily, EveryClassIsPolymorphic) {
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::ExLock>);
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::ScopeLock>);
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::ScopeUnlock>);
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::ExFlag>);
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::ExScopeFlag>);
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::Condition>);
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::ExThreadId>);
  EXPECT_TRUE(std::has_virtual_destructor_v<exc::exc_internal::internal_lockable>);
}

TEST(ExLock, DoesItsOwnWorkUnlessAClassStandsInForAnother) {
  SpyLock lock;
  EXPECT_EQ(lock.GetLock(), &lock);
}

TEST(ExLock, DefaultOfThePassThroughWithoutArgumentsDoesNothing) {
  SpyLock lock;
  lock.exc::ExLock::Forward();
  EXPECT_EQ(lock.calls, Calls{});
}
