#include "Sources/file_loader/file_loader_data.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "exc/lock/scope_lock.h"
#include "exc/result/noerr_error.h"
#include "suite/audio/errors.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/support/throws_with_text.h"

namespace {

using fakes::decoder::ErrorKind;
using Journal = std::vector<std::string>;

// What this thread does with its locks during `operation`.
Journal LocksOf(const std::function<void()>& operation) {
  fakes::TakeJournal();
  {
    const fakes::locks::Journaling journaling;
    operation();
  }
  return fakes::TakeJournal();
}

class FileLoaderDataTest : public testing::Test {
 protected:
  FileLoaderDataTest() { fakes::decoder::Reset(); }

  static void Count(FileLoaderData* data) { ++*static_cast<int*>(data->UserData()); }

  int called_ = 0;
  FileLoaderData data_{"12", "/show/data/12 Waltz.obd", "rate=48000", Count, &called_};
};

TEST_F(FileLoaderDataTest, StartsWithoutContentErrorOrJoin) {
  EXPECT_EQ(data_.SongNumber(), "12");
  EXPECT_EQ(data_.UserData(), &called_);
  EXPECT_EQ(data_.AudioContent(), nullptr);
  EXPECT_FALSE(data_.Joined());
  EXPECT_FALSE(data_.GetErrorOccurred());
  EXPECT_EQ(data_.GetErrorReason(), "");
  EXPECT_EQ(called_, 0);
}

TEST_F(FileLoaderDataTest, LoadHandsPathAndArgumentToTheDecoderAndKeepsTheContent) {
  fakes::decoder::SetContent("/show/data/12 Waltz.obd", 77);
  const std::unique_ptr<tesk_audio::AudioSampleContent> content(data_.Load());
  ASSERT_NE(content, nullptr);
  EXPECT_EQ(content->GetSampleCount(), 77u);
  EXPECT_EQ(data_.AudioContent(), content.get());
  EXPECT_EQ(fakes::decoder::GetCalls(),
            (std::vector<fakes::decoder::Call>{{"/show/data/12 Waltz.obd", "rate=48000"}}));
}

TEST_F(FileLoaderDataTest, LoadLetsTheDecodersErrorThroughAndKeepsNoContent) {
  fakes::decoder::FailDecode("/show/data/12 Waltz.obd", ErrorKind::OggVorbis, "bad page");
  EXPECT_TRUE(
      test_support::ThrowsWithText<tesk_audio::OggVorbisDecodeError>([&] { data_.Load(); }, "bad page"));
  EXPECT_EQ(data_.AudioContent(), nullptr);
}

TEST_F(FileLoaderDataTest, TheContentOutlivesTheRecord) {
  std::unique_ptr<tesk_audio::AudioSampleContent> content;
  {
    FileLoaderData data("1", "path", "", Count, &called_);
    content.reset(data.Load());
  }
  EXPECT_EQ(test_support::StaircaseContent::alive, 1);
  EXPECT_EQ(content->GetSampleCount(), 1000u);
}

TEST_F(FileLoaderDataTest, RecordErrorKeepsIdAndReason) {
  data_.RecordError(4, "not audio");
  EXPECT_TRUE(data_.GetErrorOccurred());
  EXPECT_EQ(data_.GetErrorId(), 4);
  EXPECT_EQ(data_.GetErrorReason(), "not audio");
}

TEST_F(FileLoaderDataTest, JoinedIsWhatWasSetLast) {
  data_.Joined(true);
  EXPECT_TRUE(data_.Joined());
  data_.Joined(false);
  EXPECT_FALSE(data_.Joined());
}

TEST_F(FileLoaderDataTest, ItsLockIsNamedAndGuardsTheJoinedFlag) {
  EXPECT_EQ(LocksOf([&] { data_.Joined(true); }), (Journal{"+FileLoaderData", "-FileLoaderData"}));
  EXPECT_EQ(LocksOf([&] { data_.Joined(); }), (Journal{"+FileLoaderData", "-FileLoaderData"}));
}

TEST_F(FileLoaderDataTest, EverythingElseIsAskedWithoutALock) {
  EXPECT_EQ(LocksOf([&] {
              data_.RecordError(4, "not audio");
              data_.AudioContent();
              data_.SongNumber();
              data_.ThreadID();
              data_.UserData();
              data_.GetErrorOccurred();
              data_.GetErrorId();
              data_.GetErrorReason();
              data_.CallFinished();
            }),
            Journal());
}

TEST_F(FileLoaderDataTest, IsALockThatOneThreadHoldsAtATime) {
  bool taken = false;
  {
    exc::ScopeLock lock(data_);
    std::thread([&] {
      if (data_.TryLock()) {
        taken = true;
        data_.Unlock();
      }
    }).join();
  }
  EXPECT_FALSE(taken);
}

TEST_F(FileLoaderDataTest, CallFinishedCallsBackOnceWithTheRecord) {
  data_.CallFinished();
  EXPECT_EQ(called_, 1);
}

TEST_F(FileLoaderDataTest, JoinWaitsForTheThreadAndDoesNotSetJoined) {
  bool ran = false;
  pthread_create(
      data_.ThreadID(), nullptr,
      [](void* flag) -> void* {
        *static_cast<bool*>(flag) = true;
        return nullptr;
      },
      &ran);
  data_.Join();
  EXPECT_TRUE(ran);
  EXPECT_FALSE(data_.Joined());
}

// A thread cannot wait for itself.
TEST_F(FileLoaderDataTest, AJoinThatFailsThrowsWithCallCodeAndSystemText) {
  *data_.ThreadID() = pthread_self();
  EXPECT_TRUE(test_support::ThrowsWithText<exc::NOERRError>(
      [&] { data_.Join(); }, "pthread_join(fld->thread_id, &thread_data): 35 Resource deadlock avoided"));
}

}  // namespace
