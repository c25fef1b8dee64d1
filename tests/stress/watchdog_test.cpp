#include "tests/stress/watchdog.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

namespace {

// Not inlined and not in a namespace without a name: the stack is to show it.
[[gnu::noinline]] void WaitForSomethingThatNeverComes(bool* alwaysFalse) {
  std::mutex mutex;
  std::condition_variable changed;
  std::unique_lock lock(mutex);
  changed.wait(lock, [=] { return *alwaysFalse; });
}

void HangInAThread() {
  stress::Watchdog watchdog(std::chrono::milliseconds(300));
  watchdog.Beat("waiting for something that never comes");
  bool never = false;
  std::thread(WaitForSomethingThatNeverComes, &never).join();
}

void BeatForAWhile() {
  {
    // Patient enough for a busy machine, which lets nobody beat for a while now and then.
    stress::Watchdog watchdog(std::chrono::milliseconds(2'000));
    for (int i = 0; i < 125; ++i) {
      watchdog.Beat("beating");
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  _exit(0);
}

}  // namespace

TEST(WatchdogDeathTest, AHangEndsTheProgramWithTheStackOfEveryThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(HangInAThread(), testing::ExitedWithCode(99),
              "WATCHDOG: no progress for 300 ms in: waiting for something that never comes");
  EXPECT_EXIT(HangInAThread(), testing::ExitedWithCode(99), "thread [0-9]+ \"stress_test\"");
  EXPECT_EXIT(HangInAThread(), testing::ExitedWithCode(99), "pthread_cond_wait|cond_wait");
  EXPECT_EXIT(HangInAThread(), testing::ExitedWithCode(99), "pthread_join|thread::join");
}

TEST(WatchdogDeathTest, WhoeverMakesProgressIsLeftAlone) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(BeatForAWhile(), testing::ExitedWithCode(0), "");
}
