// The decoding loop with decoders that lie, never end, or need more than there is.
#include "reference_suite/audio/decode/decode_content.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "reference_suite/audio/decode/decoding_stop.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

using tesk_audio::DecodedFormat;
using tesk_audio::DecodeRequest;

// Promises one length and delivers another.
class LyingDecoder : public tesk_audio::AudioDecoder {
 public:
  LyingDecoder(long long promised, long long delivered, bool isOgg = false) : delivered_(delivered) {
    format_ = {isOgg ? "Ogg Opus" : "WAV", 48000.0, 1, promised, isOgg};
  }

  const DecodedFormat& Format() const override { return format_; }
  void Inspect() override { inspected_ = true; }
  std::size_t Read(float* frames, std::size_t count) override {
    EXPECT_TRUE(inspected_);
    const long long part = std::min(static_cast<long long>(count), delivered_ - position_);
    std::fill_n(frames, part, 0.25F);
    position_ += part;
    return static_cast<std::size_t>(part);
  }
  std::vector<std::string> Warnings() const override { return {"one thing", "another"}; }

  long long Position() const { return position_; }

 private:
  DecodedFormat format_;
  long long delivered_;
  long long position_ = 0;
  bool inspected_ = false;
};

DecodeRequest Request(unsigned long long memory = std::numeric_limits<unsigned long long>::max()) {
  DecodeRequest request;
  request.shownPath = "song";
  request.availableMemoryBytes = [memory] { return memory; };
  return request;
}

// Asks for the end of all decoding when it has delivered a little.
class ClosingDecoder : public LyingDecoder {
 public:
  ClosingDecoder() : LyingDecoder(-1, 100'000'000) {}
  std::size_t Read(float* frames, std::size_t count) override {
    if (Position() > 20'000 && !stop_) stop_ = std::make_unique<tesk_audio::DecodingStop>();
    return LyingDecoder::Read(frames, count);
  }

 private:
  std::unique_ptr<tesk_audio::DecodingStop> stop_;
};

TEST(DecodeContent, IsBrokenOffAtTheNextBlockWhenNobodyWantsItAnyMore) {
  for (const double rate : {0.0, 44'100.0}) {
    ClosingDecoder decoder;
    DecodeRequest request = Request();
    request.rateHz = rate;
    EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(
        [&] { DecodeContent(decoder, request); }, "song: not decoded to its end: the show has been closed."));
    EXPECT_LT(decoder.Position(), 100'000);
  }
  const test_support::CoutCapture console;
  LyingDecoder decoder(-1, 20'000);
  EXPECT_EQ(DecodeContent(decoder, Request())->GetSampleCount(), 20'000U) << "others are not broken off";
}

TEST(DecodeContent, CountsWhatComesOutAndNotWhatIsPromised) {
  for (const long long promised : {-1LL, 0LL, 10LL, 100'000LL, 4'000'000'000LL}) {
    const test_support::CoutCapture console;
    LyingDecoder decoder(promised, 20'000);
    EXPECT_EQ(tesk_audio::DecodeContent(decoder, Request())->GetSampleCount(), 20'000U) << promised;
  }
}

TEST(DecodeContent, WarningsAreLinesThatNameTheFile) {
  const test_support::CoutCapture console;
  LyingDecoder decoder(5, 5);
  tesk_audio::DecodeContent(decoder, Request());
  EXPECT_EQ(console.Text(), "WARNING: song: one thing.\nWARNING: song: another.\n");
}

TEST(DecodeContent, NoFramesAtAll) {
  LyingDecoder wav(1000, 0);
  EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(
      [&] { tesk_audio::DecodeContent(wav, Request()); },
      "song: the WAV file holds no audio: not one frame could be decoded. Export the recording again."));
  LyingDecoder ogg(1000, 0, true);
  EXPECT_THROW(tesk_audio::DecodeContent(ogg, Request()), tesk_audio::OggVorbisDecodeError);
}

TEST(DecodeContent, TooManyFramesAreRefusedBeforeOneIsDecoded) {
  LyingDecoder decoder(4'294'967'296LL, 5'000'000'000LL);
  EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(
      [&] { tesk_audio::DecodeContent(decoder, Request()); },
      "song: 4294967296 frames are more than the 4294967295 that a song can have. Split the recording."));
  EXPECT_EQ(decoder.Position(), 0);
}

TEST(DecodeContent, TooManyFramesAreRefusedWhileDecoding) {
  DecodeRequest request = Request();
  request.maxFrames = 100'000;
  LyingDecoder decoder(-1, 1LL << 60);
  EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(
      [&] { tesk_audio::DecodeContent(decoder, request); },
      "song: 106496 frames are more than the 100000 that a song can have. Split the recording."));
  LyingDecoder exact(-1, 100'000);
  const test_support::CoutCapture console;
  EXPECT_EQ(tesk_audio::DecodeContent(exact, request)->GetSampleCount(), 100'000U);
}

TEST(DecodeContent, TheLengthAtTheNewRateCounts) {
  DecodeRequest request = Request();
  request.rateHz = 96000.0;
  request.maxFrames = 100'000;
  LyingDecoder decoder(50'001, 50'001);
  EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(
      [&] { tesk_audio::DecodeContent(decoder, request); },
      "song: 100002 frames are more than the 100000 that a song can have. Split the recording."));
}

TEST(DecodeContent, AHeaderThatPromisesTheLargestNumberIsRefusedAndNotAllocated) {
  LyingDecoder decoder(std::numeric_limits<long long>::max(), 1000);
  DecodeRequest request = Request();
  request.rateHz = 192000.0;
  EXPECT_THROW(tesk_audio::DecodeContent(decoder, request), tesk_audio::AudioSampleContentError);
}

TEST(DecodeContent, WhatDoesNotFitIntoMemoryIsRefusedBeforeOneFrameIsDecoded) {
  LyingDecoder decoder(1'728'000'000, 1'728'000'000);  // ten hours
  EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { tesk_audio::DecodeContent(decoder, Request(2'000'000'000)); },
      "song: decoding needs 6592 MiB of memory and only 1907 MiB are free. Close other programs, or split "
      "the recording."));
  EXPECT_EQ(decoder.Position(), 0);
}

TEST(DecodeContent, MemoryThatShrinksWhileDecodingIsNoticed) {
  unsigned long long memory = 40ULL << 20U;
  DecodeRequest request = Request();
  request.availableMemoryBytes = [&memory] { return memory -= 4ULL << 20U; };
  LyingDecoder decoder(-1, 1LL << 40);
  EXPECT_TRUE(ThrowsWithText<tesk_audio::TESKAudioError>(
      [&] { tesk_audio::DecodeContent(decoder, request); },
      "song: decoding needs 17 MiB of memory and only 12 MiB are free. Close other programs, or split the "
      "recording."));
}

}  // namespace
