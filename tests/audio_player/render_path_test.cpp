#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <utility>

#include "Sources/audio_player/errors.h"
#include "exc/assertion/ex_assertion_error.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_decoder.h"
#include "tests/support/deleter_clock.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_audio::SampleCount;

constexpr char kScaleAssertion[] =
    "Assertion failed: exc::equal( ioPacketCount->GetScale(), static_cast<long double>(1.0)), function "
    "ReadSamples, file Sources/audio_player, line 392.";

class RenderPath : public PlayerTest {
 protected:
  // Current without decoded audio, while the output goes on: its loader is held.
  void LoadUndecoded(const std::string& song) {
    fakes::decoder::HoldLoader(Path(song));
    GetPlayer().LoadSong(song);
  }

  std::array<float, 16> buffer_ = [] {
    std::array<float, 16> buffer;
    buffer.fill(-1.0F);
    return buffer;
  }();
};

TEST_F(RenderPath, ReadsAtTheSampleIndexAndMovesItOn) {
  LoadReady("1");
  AsOutputSees().AddToSampleIndex(100);
  SampleCount count(4, 1.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 4);
  EXPECT_EQ(count.GetUnscaled(), 4);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 104);
  for (unsigned frame = 0; frame < 4; ++frame) EXPECT_EQ(buffer_[frame], 100.0F + static_cast<float>(frame));
  EXPECT_EQ(buffer_[4], -1.0F);
}

TEST_F(RenderPath, AtTheEndOfTheAudioTheCountBecomesWhatThereIs) {
  LoadReady("1");  // 1000 frames
  AsOutputSees().AddToSampleIndex(990);
  SampleCount count(16, 1.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 10);
  EXPECT_EQ(count.GetUnscaled(), 10);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 1000);
}

TEST_F(RenderPath, ARequestOf0Returns0ChangesNothingAndDoesNotCheckTheScale) {
  LoadReady("1");
  SampleCount count(0, 2.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 0);
  EXPECT_EQ(count.GetUnscaled(), 0);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 0);
  EXPECT_EQ(buffer_[0], -1.0F);
}

TEST_F(RenderPath, WithoutDecodedAudioTheIndexMovesOnInSilence) {
  LoadReady("1");
  LoadUndecoded("4");
  SampleCount count(16, 1.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 0);
  EXPECT_EQ(count.GetUnscaled(), 16);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 16);
  EXPECT_EQ(buffer_[0], -1.0F);
  EXPECT_EQ(GetPlayer().GetTotalSampleCount(), 0.0);
  EXPECT_EQ(GetPlayer().GetTotalDurationSeconds(), 0.0);
  fakes::decoder::ReleaseLoader(Path("4"));
}

// Keeps what the sample index is moved by: without a song the show control has no ticks to follow it with.
class CountingPlayer : public AudioPlayer {
 public:
  using AudioPlayer::AudioPlayer;
  void AddToSampleIndex(long long samples) override {
    moved += samples;
    if (request != nullptr) countWhenMoved = request->GetUnscaled();
  }
  long long moved = 0;
  const SampleCount* request = nullptr;  // to be looked at when the index moves
  long long countWhenMoved = -1;
};

TEST_F(RenderPath, WithoutACurrentSongTheIndexMovesOnInSilence) {
  test_support::deleter_clock::Hold();
  auto player = std::make_unique<CountingPlayer>("/show", show_, &changeLog_, AudioFiles());
  const CountingPlayer& counting = *player;
  TakePlayer(std::move(player));
  SampleCount count(16, 1.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 0);
  EXPECT_EQ(count.GetUnscaled(), 16);
  EXPECT_EQ(counting.moved, 16);
  EXPECT_EQ(buffer_[0], -1.0F);
  EXPECT_EQ(GetPlayer().GetTotalSampleCount(), 0.0);
  EXPECT_EQ(GetPlayer().GetTotalDurationSeconds(), 0.0);
  DestroyOwnPlayer();
}

TEST_F(RenderPath, TheCountIsWhatThereIsWhenTheIndexMoves) {
  test_support::deleter_clock::Hold();
  auto player = std::make_unique<CountingPlayer>("/show", show_, &changeLog_, AudioFiles());
  CountingPlayer& counting = *player;
  TakePlayer(std::move(player));
  LoadReady("1");
  SampleCount count(2'000, 1.0L);
  counting.request = &count;
  std::vector<float> buffer(2'000);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer.data()), 1'000);
  EXPECT_EQ(counting.moved, 1'000);
  EXPECT_EQ(counting.countWhenMoved, 1'000);
  DestroyOwnPlayer();
}

TEST_F(RenderPath, AScaleOtherThan1IsFoundAfterTheReadAndMovesNothing) {
  LoadReady("1");
  SampleCount count(4, 1.25L);
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { AsOutputSees().ReadSamples(&count, buffer_.data()); }, kScaleAssertion));
  EXPECT_EQ(buffer_[3], 3.0F);  // it was read
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 0);
  EXPECT_EQ(count.GetUnscaled(), 4);
}

TEST_F(RenderPath, AScaleOtherThan1LeavesTheCountAsItWasAskedFor) {
  LoadReady("1");
  AsOutputSees().AddToSampleIndex(990);  // 10 frames are left
  SampleCount count(16, 1.25L);
  EXPECT_THROW(AsOutputSees().ReadSamples(&count, buffer_.data()), exc::ExAssertionError);
  EXPECT_EQ(buffer_[9], 999.0F);
  EXPECT_EQ(count.GetUnscaled(), 16);
}

TEST_F(RenderPath, TheScaleIsCheckedWithoutDecodedAudioToo) {
  LoadReady("1");
  LoadUndecoded("4");
  SampleCount count(4, 0.5L);
  EXPECT_TRUE(test_support::ThrowsWithText<exc::ExAssertionError>(
      [&] { AsOutputSees().ReadSamples(&count, buffer_.data()); }, kScaleAssertion));
  fakes::decoder::ReleaseLoader(Path("4"));
}

TEST_F(RenderPath, ReadSamplesAtMovesNothing) {
  LoadReady("1");
  long long count = 4;
  EXPECT_EQ(AsOutputSees().ReadSamplesAt(500, &count, buffer_.data()), 4);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(buffer_[0], 500.0F);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 0);
}

TEST_F(RenderPath, ReadSamplesAtReadsOneSampleToo) {
  LoadReady("1");
  long long count = 1;
  EXPECT_EQ(AsOutputSees().ReadSamplesAt(500, &count, buffer_.data()), 1);
  EXPECT_EQ(buffer_[0], 500.0F);
}

TEST_F(RenderPath, ReadSamplesAtWritesBackWhatThereIs) {
  LoadReady("1");
  long long count = 16;
  EXPECT_EQ(AsOutputSees().ReadSamplesAt(995, &count, buffer_.data()), 5);
  EXPECT_EQ(count, 5);
}

TEST_F(RenderPath, ReadSamplesAtOfACountOf0Returns0) {
  LoadReady("1");
  long long count = 0;
  EXPECT_EQ(AsOutputSees().ReadSamplesAt(500, &count, buffer_.data()), 0);
  EXPECT_EQ(buffer_[0], -1.0F);
}

TEST_F(RenderPath, ReadSamplesAtWithoutDecodedAudioReturns0AndKeepsTheCount) {
  MakePlayer();
  long long count = 4;
  EXPECT_EQ(AsOutputSees().ReadSamplesAt(500, &count, buffer_.data()), 0);
  EXPECT_EQ(count, 4);
}

TEST_F(RenderPath, TheContentOfASongThatIsNotDecodedIsAnError) {
  LoadReady("1");
  LoadUndecoded("4");
  std::string lookUpText;
  try {
    const std::map<std::string, int> empty;
    empty.at("4");
  } catch (const std::out_of_range& error) {
    lookUpText = error.what();
  }
  EXPECT_TRUE(
      test_support::ThrowsWithText<SongNotLoaded>([&] { GetPlayer().GetCurrentSongContent(); }, lookUpText));
  fakes::decoder::ReleaseLoader(Path("4"));
}

TEST_F(RenderPath, TheContentWithoutACurrentSongIsAnErrorWithTheBasesText) {
  MakePlayer();
  EXPECT_TRUE(test_support::ThrowsWithText<SongNotLoaded>([&] { GetPlayer().GetCurrentSongContent(); },
                                                          "No song is active."));
}

TEST_F(RenderPath, TheContentIsThatOfTheCurrentSong) {
  fakes::decoder::SetContent(Path("2"), 222);
  LoadReady("1");
  EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 1000u);
  LoadReady("2");
  EXPECT_EQ(GetPlayer().GetCurrentSongContent()->GetSampleCount(), 222u);
}

// A content whose reads a test can look into.
class WatchedContent : public test_support::StaircaseContent {
 public:
  explicit WatchedContent(std::function<void()> onRead)
      : StaircaseContent(1000), onRead_(std::move(onRead)) {}
  unsigned Read(long long start, long long* count, void* buffer) const override {
    onRead_();
    return StaircaseContent::Read(start, count, buffer);
  }

 private:
  std::function<void()> onRead_;
};

TEST_F(RenderPath, NoLockIsHeldWhileTheContentIsRead) {
  bool wasFree = false;
  fakes::decoder::SetContent(Path("1"),
                             [&] { return new WatchedContent([&] { wasFree = PlayerLockIsFree(); }); });
  LoadReady("1");
  SampleCount count(4, 1.0L);
  AsOutputSees().ReadSamples(&count, buffer_.data());
  EXPECT_TRUE(wasFree);
}

TEST_F(RenderPath, ACountOf0DoesNotComeToTheContent) {
  int reads = 0;
  fakes::decoder::SetContent(Path("1"), [&] { return new WatchedContent([&] { ++reads; }); });
  LoadReady("1");
  long long plainCount = 0;
  EXPECT_EQ(AsOutputSees().ReadSamplesAt(500, &plainCount, buffer_.data()), 0);
  SampleCount count(0, 1.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 0);
  EXPECT_EQ(reads, 0);
  plainCount = 1;
  AsOutputSees().ReadSamplesAt(500, &plainCount, buffer_.data());
  EXPECT_EQ(reads, 1);
}

TEST_F(RenderPath, OtherExceptionsOfAReadPassThrough) {
  fakes::decoder::SetContent(
      Path("1"), [] { return new WatchedContent([] { throw std::runtime_error("a hole in the tape"); }); });
  LoadReady("1");
  SampleCount count(4, 1.0L);
  EXPECT_TRUE(test_support::ThrowsWithText<std::runtime_error>(
      [&] { AsOutputSees().ReadSamples(&count, buffer_.data()); }, "a hole in the tape"));
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 0);
  long long plainCount = 4;
  EXPECT_TRUE(test_support::ThrowsWithText<std::runtime_error>(
      [&] { AsOutputSees().ReadSamplesAt(0, &plainCount, buffer_.data()); }, "a hole in the tape"));
}

// Its frames may be larger than those that the output has room for.
TEST_F(RenderPath, ContentThatTheOutputRefusedIsNeverRead) {
  fakes::decoder::SetContent(Path("2"), 1000, 44100.0, 16);
  LoadReady("1");
  Output().RefuseContent("16 channels do not fit 1");
  EXPECT_THROW(GetPlayer().LoadSong("2"), AudioPlayer::AudioFormatError);
  EXPECT_TRUE(test_support::ThrowsWithText<SongNotLoaded>([&] { GetPlayer().GetCurrentSongContent(); },
                                                          "The output has refused the audio of this song."));
  SampleCount count(4, 1.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 0);
  EXPECT_EQ(buffer_[0], -1.0F);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 4);  // the song runs on in silence
  Output().AcceptContent();
  GetPlayer().LoadSong("1");
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 4);
}

// Current and decoded in advance, but the output, which goes on reading while it plays, has not been asked
// yet.
TEST_F(RenderPath, ContentOfAnotherFormatIsNotReadBeforeTheOutputHasTakenIt) {
  const auto expectUnread = [this](const std::string& song) {
    LoadReady("2");
    GetPlayer().SetActiveSongNumber(song);
    SampleCount count(4, 1.0L);
    EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 0);
    long long plainCount = 4;
    EXPECT_EQ(AsOutputSees().ReadSamplesAt(0, &plainCount, buffer_.data()), 0);
    EXPECT_EQ(buffer_[0], -1.0F);
    GetPlayer().LoadSong(song);
    EXPECT_EQ(GetPlayer().GetTotalSampleCount(), 1000.0) << "now the output has taken it";
  };
  fakes::decoder::SetContent(Path("1"), 1000, 44100.0, 16);
  fakes::decoder::SetContent(Path("3"), 1000, 48000.0, 1);
  expectUnread("1");
  expectUnread("3");
}

// An output that has been taken out reads on until it is gone.
TEST_F(RenderPath, ContentOfAnotherFormatIsNotReadByAnOutputThatIsBeingDeleted) {
  fakes::decoder::SetContent(Path("2"), 1000, 44100.0, 16);
  LoadReady("1");
  GetPlayer().SetActiveSongNumber("2");
  GetPlayer().Shutdown();
  SampleCount count(4, 1.0L);
  EXPECT_EQ(AsOutputSees().ReadSamples(&count, buffer_.data()), 0);
  EXPECT_EQ(buffer_[0], -1.0F);
}

TEST_F(RenderPath, ElapsedAndTotalSecondsAreAtTheOutputsRate) {
  LoadReady("1");
  Output().SetSampleRateHz(500.0);
  Output().SetElapsedSampleCount(125);
  EXPECT_EQ(GetPlayer().GetSampleRateHz(), 500.0);
  EXPECT_EQ(GetPlayer().GetElapsedSampleCount(), 125);
  EXPECT_EQ(GetPlayer().GetElapsedSeconds(), 0.25);
  EXPECT_EQ(GetPlayer().GetTotalSampleCount(), 1000.0);
  EXPECT_EQ(GetPlayer().GetTotalDurationSeconds(), 2.0);
}

TEST_F(RenderPath, ARateOf0GivesWhatTheDivisionGives) {
  LoadReady("1");
  Output().SetSampleRateHz(0.0);
  Output().SetElapsedSampleCount(0);
  EXPECT_TRUE(std::isnan(GetPlayer().GetElapsedSeconds()));
  EXPECT_TRUE(std::isinf(GetPlayer().GetTotalDurationSeconds()));
}

TEST_F(RenderPath, WithoutAnOutputNothingHasElapsed) {
  MakePlayer();
  EXPECT_EQ(GetPlayer().GetElapsedSampleCount(), 0);
  EXPECT_EQ(GetPlayer().GetSampleRateHz(), 44100.0);
  EXPECT_EQ(GetPlayer().GetElapsedSeconds(), 0.0);
}

}  // namespace
