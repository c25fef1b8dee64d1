#include "exc/thread/ex_thread_id.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/support/wait_until.h"

TEST(ExThreadId, IsNullByDefault) {
  EXPECT_TRUE(exc::ExThreadId() == exc::ExThreadId());
  EXPECT_TRUE(exc::ExThreadId() == exc::ExThreadId(pthread_t{}));
  EXPECT_FALSE(exc::ExThreadId() == exc::ExThreadId(pthread_self()));
}

TEST(ExThreadId, ComparesHandles) {
  EXPECT_TRUE(exc::ExThreadId(pthread_self()) == exc::ExThreadId(pthread_self()));
}

TEST(ExThreadId, TellsLiveThreadsApart) {
  std::atomic<bool> stop{false};
  std::thread other([&] { test_support::WaitUntil([&] { return stop.load(); }); });
  EXPECT_FALSE(exc::ExThreadId(pthread_self()) == exc::ExThreadId(other.native_handle()));
  stop = true;
  other.join();
}

TEST(ExThreadId, AssignmentCopiesTheHandle) {
  exc::ExThreadId id;
  id = exc::ExThreadId(pthread_self());
  EXPECT_TRUE(id == exc::ExThreadId(pthread_self()));
  const exc::ExThreadId copy(id);
  EXPECT_TRUE(copy == id);
}
