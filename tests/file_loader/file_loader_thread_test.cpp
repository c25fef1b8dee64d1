#include "Sources/file_loader/file_loader_thread.h"

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "suite/utility/thread_names.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/fake_log.h"
#include "tests/support/no_threads.h"
#include "tests/support/throws_with_text.h"

namespace {

using fakes::decoder::ErrorKind;

// Who waits for loaders here. Its callback keeps what it saw, on the loader's own thread.
struct Owner {
  enum class Answer { Return, ThrowException, ThrowOther };

  static void Finished(FileLoaderData* data) {
    auto& owner = *static_cast<Owner*>(data->UserData());
    {
      const std::lock_guard lock(owner.mutex);
      ++owner.calls;
      owner.threadName = exc::thread_names.GetNameOfCurrentThread();
      owner.thread = pthread_self();
      owner.sawContent = data->AudioContent() != nullptr;
      owner.sawError = data->GetErrorOccurred();
    }
    if (owner.answer == Answer::ThrowException) throw std::runtime_error("the owner is gone");
    if (owner.answer == Answer::ThrowOther) throw 7;
  }

  Answer answer = Answer::Return;
  std::mutex mutex;
  int calls = 0;
  std::string threadName;
  pthread_t thread{};
  bool sawContent = false;
  bool sawError = false;
};

class FileLoaderThreadTest : public testing::Test {
 protected:
  FileLoaderThreadTest() {
    fakes::decoder::Reset();
    fakes::TakeLogEntries();
  }

  // Runs a loader for `path` to its end.
  std::unique_ptr<FileLoaderData> Run(const std::string& path) {
    std::unique_ptr<FileLoaderData> data(
        StartFileLoaderThread("12", path, "rate=44100", Owner::Finished, &owner_));
    data->Join();
    content_.reset(data->AudioContent());
    return data;
  }

  Owner owner_;
  std::unique_ptr<tesk_audio::AudioSampleContent> content_;
};

TEST_F(FileLoaderThreadTest, DecodesTheFileAndCallsBackOnceOnItsOwnThread) {
  const auto data = Run("12 Waltz.obd");
  EXPECT_NE(data->AudioContent(), nullptr);
  EXPECT_FALSE(data->GetErrorOccurred());
  EXPECT_EQ(owner_.calls, 1);
  EXPECT_TRUE(owner_.sawContent);
  EXPECT_TRUE(pthread_equal(owner_.thread, *data->ThreadID()) != 0);
  EXPECT_TRUE(pthread_equal(owner_.thread, pthread_self()) == 0);
  EXPECT_EQ(fakes::decoder::GetCalls(), (std::vector<fakes::decoder::Call>{{"12 Waltz.obd", "rate=44100"}}));
}

TEST_F(FileLoaderThreadTest, TheThreadOfSong12IsNamedFileLoader12) {
  Run("any");
  EXPECT_EQ(owner_.threadName, "file_loader12");
}

TEST_F(FileLoaderThreadTest, TheThreadHasItsNameWhileItDecodes) {
  std::string nameWhileDecoding;
  fakes::decoder::SetContent("any", [&] {
    nameWhileDecoding = exc::thread_names.GetNameOfCurrentThread();
    return new test_support::StaircaseContent(10);
  });
  Run("any");
  EXPECT_EQ(nameWhileDecoding, "file_loader12");
}

TEST_F(FileLoaderThreadTest, TheRecordStandsThereBeforeDecodingEnds) {
  fakes::decoder::HoldLoader("slow");
  std::unique_ptr<FileLoaderData> data(StartFileLoaderThread("12", "slow", "", Owner::Finished, &owner_));
  ASSERT_TRUE(fakes::decoder::WaitUntilHeld("slow"));
  EXPECT_FALSE(data->Joined());
  EXPECT_EQ(data->SongNumber(), "12");
  fakes::decoder::ReleaseLoader("slow");
  data->Join();
  content_.reset(data->AudioContent());
  EXPECT_NE(content_, nullptr);
}

struct Failure {
  ErrorKind kind;
  const char* text;
  int id;
  const char* reason;
  const char* why;
};

void PrintTo(const Failure& failure, std::ostream* out) {
  *out << failure.why;
}

class FileLoaderThreadFailures : public FileLoaderThreadTest, public testing::WithParamInterface<Failure> {};

TEST_P(FileLoaderThreadFailures, AreRecordedByIdAndReasonAndCalledBackOnce) {
  fakes::decoder::FailDecode("broken", GetParam().kind, GetParam().text);
  const auto data = Run("broken");
  EXPECT_TRUE(data->GetErrorOccurred());
  EXPECT_EQ(data->GetErrorId(), GetParam().id);
  EXPECT_EQ(data->GetErrorReason(), GetParam().reason);
  EXPECT_EQ(data->AudioContent(), nullptr);
  EXPECT_EQ(owner_.calls, 1);
  EXPECT_TRUE(owner_.sawError);
  EXPECT_TRUE(fakes::TakeLogEntries().empty());
}

INSTANTIATE_TEST_SUITE_P(
    ByKind, FileLoaderThreadFailures,
    testing::Values(Failure{ErrorKind::OggVorbis, "page 3 is damaged", 3, "page 3 is damaged",
                            "the most specific kind"},
                    Failure{ErrorKind::Content, "not audio", 4, "not audio", "its sibling"},
                    Failure{ErrorKind::Audio, "cannot open", 5, "cannot open", "the base of both"},
                    Failure{ErrorKind::Runtime, "something else", 6, "something else", "any other exception"},
                    Failure{ErrorKind::OutOfMemory, "", 6, "std::bad_alloc", "no memory to decode into"},
                    Failure{ErrorKind::NotAnException, "", 6, "Unknown exception", "a thrown number"}));

TEST_F(FileLoaderThreadTest, AnExceptionFromTheCallbackIsLoggedWithLine104) {
  owner_.answer = Owner::Answer::ThrowException;
  Run("any");
  EXPECT_EQ(fakes::TakeLogEntries(),
            (std::vector<fakes::LogEntry>{{"the owner is gone", "Sources/file_loader", 104}}));
}

TEST_F(FileLoaderThreadTest, AnythingElseFromTheCallbackIsLoggedAsUnknownWithLine104) {
  owner_.answer = Owner::Answer::ThrowOther;
  Run("any");
  EXPECT_EQ(fakes::TakeLogEntries(),
            (std::vector<fakes::LogEntry>{{"Unknown exception.", "Sources/file_loader", 104}}));
}

TEST_F(FileLoaderThreadTest, TheCallbackRunsOnceAlsoWhenItThrowsAfterAnError) {
  fakes::decoder::FailDecode("broken", ErrorKind::Audio, "cannot open");
  owner_.answer = Owner::Answer::ThrowException;
  const auto data = Run("broken");
  EXPECT_EQ(owner_.calls, 1);
  EXPECT_EQ(data->GetErrorReason(), "cannot open");
}

TEST_F(FileLoaderThreadTest, ManyLoadersRunAtOnce) {
  std::vector<std::unique_ptr<FileLoaderData>> loaders;
  for (int song = 0; song < 20; ++song) {
    loaders.emplace_back(StartFileLoaderThread(std::to_string(song), "any", "", Owner::Finished, &owner_));
  }
  for (const auto& loader : loaders) {
    loader->Join();
    delete loader->AudioContent();
  }
  EXPECT_EQ(owner_.calls, 20);
  EXPECT_EQ(test_support::StaircaseContent::alive, 0);
}

// The record is not freed then: see the suppression for leak checkers.
TEST_F(FileLoaderThreadTest, NoThreadFromTheSystemThrows) {
  const test_support::NoThreads noThreads;
  EXPECT_TRUE(test_support::ThrowsWithText<std::runtime_error>(
      [&] { StartFileLoaderThread("12", "any", "", Owner::Finished, &owner_); },
      "Creating file loader thread: 11 EAGAIN: The system lacked the necessary resources to create another "
      "thread."));
  EXPECT_EQ(owner_.calls, 0);
}

// The body itself, as the system calls it.
TEST_F(FileLoaderThreadTest, TheBodyReturnsNull) {
  FileLoaderData data("3", "any", "", Owner::Finished, &owner_);
  EXPECT_EQ(FileLoaderThread(&data), nullptr);
  content_.reset(data.AudioContent());
  EXPECT_EQ(owner_.threadName, "file_loader3");
}

}  // namespace
