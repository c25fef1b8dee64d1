#include "Sources/file_loader/content_deleter_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "suite/utility/thread_names.h"
#include "tests/fakes/fake_log.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

// What the thread calls back into.
struct Owner {
  static void Wake(void* argument) {
    auto& owner = *static_cast<Owner*>(argument);
    owner.threadName = exc::thread_names.GetNameOfCurrentThread();
    if (++owner.calls == owner.throwAt) throw std::runtime_error("cannot free");
    if (owner.calls == owner.throwNumberAt) throw 7;
  }

  std::atomic<int> calls{0};
  std::string threadName;  // read when the thread has been joined
  int throwAt = 0;
  int throwNumberAt = 0;
};

// No second passes by itself.
struct HeldClock {
  HeldClock() { test_support::deleter_clock::Hold(); }
  ~HeldClock() { test_support::deleter_clock::LetGo(); }
};

class ContentDeleterThreadTest : public testing::Test {
 protected:
  ContentDeleterThreadTest() { fakes::TakeLogEntries(); }

  void Start() { data_.reset(StartAudioContentDeleterThread(Owner::Wake, &owner_, &thread_)); }

  Owner owner_;
  pthread_t thread_{};
  std::unique_ptr<AudioContentDeleterThreadData> data_;
};

TEST_F(ContentDeleterThreadTest, RunsUntilExit) {
  AudioContentDeleterThreadData data(Owner::Wake, &owner_);
  EXPECT_TRUE(data.ShouldRun());
  data.Exit();
  EXPECT_FALSE(data.ShouldRun());
}

TEST_F(ContentDeleterThreadTest, TheCallbackGetsItsArgument) {
  AudioContentDeleterThreadData data(Owner::Wake, &owner_);
  data.DoAudioContentDeleterCallback();
  EXPECT_EQ(owner_.calls, 1);
}

TEST_F(ContentDeleterThreadTest, TheRecordsLockIsNamedAndGuardsTheFlagButNotTheCallback) {
  AudioContentDeleterThreadData data(Owner::Wake, &owner_);
  const std::vector<std::string> once{"+AudioContentDeleterThreadData", "-AudioContentDeleterThreadData"};
  fakes::TakeJournal();
  {
    const fakes::locks::Journaling journaling;
    data.ShouldRun();
    EXPECT_EQ(fakes::TakeJournal(), once);
    data.Exit();
    EXPECT_EQ(fakes::TakeJournal(), once);
    data.DoAudioContentDeleterCallback();
    EXPECT_EQ(fakes::TakeJournal(), std::vector<std::string>());
  }
}

TEST_F(ContentDeleterThreadTest, EndsWithoutACallbackWhenExitComesBeforeTheFirstWakeUp) {
  const HeldClock clock;
  Start();
  data_->Exit();
  test_support::deleter_clock::LetGo();
  pthread_join(thread_, nullptr);
  EXPECT_EQ(owner_.calls, 0);
}

TEST_F(ContentDeleterThreadTest, CallsBackOnceASecondOnAThreadWithItsName) {
  const HeldClock clock;
  Start();
  for (int second = 1; second <= 3; ++second) {
    test_support::deleter_clock::PassOneSecond();
    EXPECT_EQ(owner_.calls, second);
    EXPECT_EQ(test_support::deleter_clock::GetLastSleep(), 1u);
  }
  data_->Exit();
  test_support::deleter_clock::LetGo();
  pthread_join(thread_, nullptr);
  EXPECT_EQ(owner_.calls, 3);
  EXPECT_EQ(owner_.threadName, "AudioContentDeleter");
}

TEST_F(ContentDeleterThreadTest, AnExceptionFromTheCallbackIsLoggedWithLine169AndEndsTheThread) {
  owner_.throwAt = 1;
  Start();
  pthread_join(thread_, nullptr);  // without Exit
  EXPECT_EQ(owner_.calls, 1);
  EXPECT_EQ(fakes::TakeLogEntries(),
            (std::vector<fakes::LogEntry>{{"cannot free", "Sources/file_loader", 169}}));
}

TEST_F(ContentDeleterThreadTest, AnythingElseFromTheCallbackIsLoggedAsUnknownWithLine169) {
  owner_.throwNumberAt = 1;
  Start();
  pthread_join(thread_, nullptr);
  EXPECT_EQ(fakes::TakeLogEntries(),
            (std::vector<fakes::LogEntry>{{"Unknown exception.", "Sources/file_loader", 169}}));
}

TEST_F(ContentDeleterThreadTest, NoThreadFromTheSystemThrows) {
  const test_support::NoThreads noThreads;
  EXPECT_TRUE(test_support::ThrowsWithText<std::runtime_error>(
      [&] { Start(); },
      "Creating audio content deleter thread.: 11 EAGAIN: The "
      "system lacked the necessary resources to create "
      "another thread."));
  EXPECT_EQ(data_, nullptr);
}

}  // namespace
