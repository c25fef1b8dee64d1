#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "exc/lock/scope_lock.h"
#include "suite/audio/errors.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/support/sleeping_thread.h"
#include "tests/support/throws_with_text.h"

namespace {

using fakes::decoder::ErrorKind;
using test_support::ThrowsWithText;

class LoaderErrors : public PlayerTest {
 protected:
  // As a loader of song 9 that ends in this way would report.
  bool Report(int errorId, const char* reason) {
    FileLoaderData data("9", "path", "", AudioPlayer_FileLoaderFinished, &GetPlayer());
    data.RecordError(errorId, reason);
    exc::ScopeLock lock(GetPlayer());
    return GetPlayer().CheckFileLoaderExceptions(&data);
  }
  bool ReportSuccess() {
    FileLoaderData data("9", "path", "", AudioPlayer_FileLoaderFinished, &GetPlayer());
    exc::ScopeLock lock(GetPlayer());
    return GetPlayer().CheckFileLoaderExceptions(&data);
  }
  auto Rethrow() {
    return [this] { GetPlayer().ThrowIfThreadExceptions(); };
  }
};

TEST_F(LoaderErrors, Id3IsRethrownAsOggVorbisDecodeError) {
  MakePlayer();
  EXPECT_TRUE(Report(3, "bad page"));
  EXPECT_TRUE(ThrowsWithText<tesk_audio::OggVorbisDecodeError>(Rethrow(), "bad page"));
}

TEST_F(LoaderErrors, Id4IsRethrownAsAudioSampleContentError) {
  MakePlayer();
  EXPECT_TRUE(Report(4, "not audio"));
  EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(Rethrow(), "not audio"));
}

TEST_F(LoaderErrors, Id5IsRethrownAsTESKAudioError) {
  MakePlayer();
  EXPECT_TRUE(Report(5, "cannot open"));
  EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(Rethrow(), "cannot open"));
}

TEST_F(LoaderErrors, Id6IsRethrownAsRuntimeError) {
  MakePlayer();
  EXPECT_TRUE(Report(6, "Unknown exception"));
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Rethrow(), "Unknown exception"));
}

TEST_F(LoaderErrors, AnyOtherIdIsALogicErrorThatQuotesTheReason) {
  MakePlayer();
  for (const int id : {0, 1, 2, 7, -1}) {
    Report(id, "out of tune");
    EXPECT_TRUE(ThrowsWithText<std::logic_error>(Rethrow(), "Unknown FileLoader exception: out of tune"))
        << id;
  }
}

TEST_F(LoaderErrors, ADecodeErrorOnALoaderSurfacesHereWithTheDecodersMessage) {
  fakes::decoder::FailDecode(Path("1"), ErrorKind::OggVorbis, "page 3 is damaged");
  MakePlayer();
  GetPlayer().LoadSong("1");
  EXPECT_TRUE(ThrowsWithText<tesk_audio::OggVorbisDecodeError>(Rethrow(), "page 3 is damaged"));
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(LoaderErrors, AThrownNumberSurfacesAsUnknown) {
  fakes::decoder::FailDecode(Path("1"), ErrorKind::NotAnException, "");
  MakePlayer();
  GetPlayer().LoadSong("1");
  EXPECT_TRUE(ThrowsWithText<std::runtime_error>(Rethrow(), "Unknown exception"));
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(LoaderErrors, ASuccessfulResultThrowsNothing) {
  MakePlayer();
  EXPECT_FALSE(ReportSuccess());
  EXPECT_FALSE(GetPlayer().GetFileLoaderErrorOccurred());
  EXPECT_NO_THROW(GetPlayer().ThrowIfThreadExceptions());
}

TEST_F(LoaderErrors, BlocksUntilALoaderHasReported) {
  MakePlayer();
  std::atomic<bool> returned{false};
  std::atomic<pid_t> id{0};
  std::thread asking([&] {
    id = test_support::ThisThread();
    EXPECT_NO_THROW(GetPlayer().ThrowIfThreadExceptions());
    returned = true;
  });
  while (id == 0) std::this_thread::yield();
  EXPECT_TRUE(test_support::WaitUntilItSleeps(id));
  EXPECT_FALSE(returned);
  ReportSuccess();
  asking.join();
  EXPECT_TRUE(returned);
}

TEST_F(LoaderErrors, BlocksUntilALoaderHasFailed) {
  MakePlayer();
  std::thread asking([&] { EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(Rethrow(), "gone")); });
  Report(5, "gone");
  asking.join();
}

// One wait and no loop: whoever is woken takes what there is, whether or not a loader has reported. Woken by
// the condition's own signal, that is always after a report.
TEST_F(LoaderErrors, OnceALoaderHasReportedNobodyWaitsAgain) {
  MakePlayer();
  ReportSuccess();
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(GetPlayer().GetFileLoaderErrorOccurred());
}

TEST_F(LoaderErrors, ThrowsTheSameErrorAgainAndAgain) {
  MakePlayer();
  Report(3, "bad page");
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(ThrowsWithText<tesk_audio::OggVorbisDecodeError>(Rethrow(), "bad page"));
  }
}

TEST_F(LoaderErrors, ALaterSuccessDoesNotClearAnError) {
  MakePlayer();
  Report(3, "bad page");
  EXPECT_FALSE(ReportSuccess());
  EXPECT_TRUE(GetPlayer().GetFileLoaderErrorOccurred());
  EXPECT_TRUE(ThrowsWithText<tesk_audio::OggVorbisDecodeError>(Rethrow(), "bad page"));
}

TEST_F(LoaderErrors, ALaterFailureOverwritesAnEarlierOne) {
  MakePlayer();
  Report(3, "bad page");
  Report(5, "cannot open");
  EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(Rethrow(), "cannot open"));
}

// Loading and playing go on refusing, also for songs that can be decoded.
TEST_F(LoaderErrors, AfterAnErrorNothingPlaysAnyMore) {
  LoadReadyWithBrokenNeighbour("1", "2", ErrorKind::Content, "not audio");
  fakes::decoder::DecodeAgain(Path("2"));
  GetPlayer().LoadSong("1");
  ASSERT_TRUE(AwaitLoaders());
  Told();
  GetPlayer().Play();
  EXPECT_EQ(Told(), (Journal{"notify.PlayerException"}));
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
}

}  // namespace
