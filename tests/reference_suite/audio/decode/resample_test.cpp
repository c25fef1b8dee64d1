// "rate=R": the song at the device's rate, with its length to the frame and its place to the sample.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>

#include "reference_suite/audio/decode/content_argument.h"
#include "reference_suite/audio/decode/resampler.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/throws_with_text.h"

namespace {

using test_support::ThrowsWithText;

TEST(Resample, LengthIsTheTimeAtTheNewRateRoundedToTheNearest) {
  EXPECT_EQ(tesk_audio::ResampledLength(44'100, 44100, 48000), 48'000);
  EXPECT_EQ(tesk_audio::ResampledLength(1, 44100, 48000), 1);
  EXPECT_EQ(tesk_audio::ResampledLength(3, 48000, 24000), 2) << "a half rounds up";
  EXPECT_EQ(tesk_audio::ResampledLength(1, 48000, 44100), 1);
  EXPECT_EQ(tesk_audio::ResampledLength(0, 48000, 44100), 0);
  EXPECT_EQ(tesk_audio::ResampledLength(4'294'967'295, 8000, 96000), 51'539'607'540);
}

class ResampledFiles : public testing::Test {
 protected:
  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("song");
};

TEST_F(ResampledFiles, ASineStaysTheSineAndInItsPlace) {
  for (const double to : {48000.0, 22050.0, 96000.0, 44101.0}) {
    const test_support::CoutCapture console;
    sound_files::Write(path_, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2,
                       sound_files::Sines(90'001, 2, 44100));
    const auto content = Decode(path_, "rate=" + std::to_string(static_cast<int>(to)));
    EXPECT_EQ(content->GetSampleRateHz(), to);
    ASSERT_EQ(content->GetSampleCount(), tesk_audio::ResampledLength(90'001, 44100, to));
    const std::vector<float> heard = Samples(*content);
    const std::vector<float> expected = sound_files::Sines(content->GetSampleCount(), 2, to);
    // Away from the ends, where the sine begins and stops all at once: 100 dB below it.
    double worst = 0.0;
    for (std::size_t i = 4000; i + 4000 < heard.size(); ++i) {
      worst = std::max(worst, std::fabs(static_cast<double>(heard[i]) - static_cast<double>(expected[i])));
    }
    EXPECT_LT(worst, 0.5e-5) << to;
    EXPECT_EQ(console.Text(), "WARNING: " + path_ + ": its 44100 Hz are resampled to " +
                                  std::to_string(static_cast<int>(to)) + " Hz.\n");
  }
}

TEST_F(ResampledFiles, TheRateItHasIsLeftAlone) {
  const test_support::CoutCapture console;
  const std::vector<float> written = sound_files::IndexCoded(10'000, 2);
  sound_files::Write(path_, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2, written);
  EXPECT_EQ(Samples(*Decode(path_, "rate=48000")), written);
  EXPECT_EQ(Samples(*Decode(path_, "rate=48000.0")), written);
  EXPECT_EQ(console.Text(), "");
}

TEST_F(ResampledFiles, EveryLengthComesOutExactly) {
  const test_support::CoutCapture console;
  for (const long long frames : {1LL, 2LL, 7LL, 100LL, 8'191LL, 8'192LL, 8'193LL, 65'537LL}) {
    sound_files::Write(path_, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 1, sound_files::Noise(frames, 1));
    for (const double to : {48000.0, 8000.0, 192000.0}) {
      const long long expected = tesk_audio::ResampledLength(frames, 44100, to);
      if (expected == 0) continue;
      EXPECT_EQ(Decode(path_, "rate=" + std::to_string(to))->GetSampleCount(), expected)
          << frames << " " << to;
    }
  }
}

TEST_F(ResampledFiles, TheSameFileGivesTheSameBitsEveryTime) {
  const test_support::CoutCapture console;
  sound_files::Write(path_, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2, sound_files::Noise(50'000, 2));
  EXPECT_EQ(Samples(*Decode(path_, "rate=48000")), Samples(*Decode(path_, "rate=48000")));
}

TEST(ContentArgument, EmptyLeavesEverythingToTheFile) {
  const tesk_audio::WantedFormat wanted = tesk_audio::FormatOfContentArgument("song", "");
  EXPECT_EQ(wanted.rateHz, 0.0);
  EXPECT_EQ(wanted.channels, 0U);
}

TEST(ContentArgument, NamesTheRate) {
  const auto rate = [](const std::string& argument) {
    const tesk_audio::WantedFormat wanted = tesk_audio::FormatOfContentArgument("song", argument);
    EXPECT_EQ(wanted.channels, 0U);
    return wanted.rateHz;
  };
  EXPECT_EQ(rate("rate=44100"), 44100.0);
  EXPECT_EQ(rate("rate=47999.5"), 47999.5);
  EXPECT_EQ(rate("rate=1000"), 1000.0);
  EXPECT_EQ(rate("rate=768000"), 768000.0);
}

TEST(ContentArgument, NamesTheChannelsBehindTheRate) {
  for (const unsigned channels : {1U, 2U, 1024U}) {
    const tesk_audio::WantedFormat wanted =
        tesk_audio::FormatOfContentArgument("song", "rate=47999.5,channels=" + std::to_string(channels));
    EXPECT_EQ(wanted.rateHz, 47999.5);
    EXPECT_EQ(wanted.channels, channels);
  }
}

TEST(ContentArgument, AnythingElseIsRefused) {
  for (const char* const argument : {"rate=",
                                     "rate=x",
                                     "rate=48000x",
                                     "rate= 48000",
                                     "rate=-48000",
                                     "rate=0",
                                     "rate=999",
                                     "rate=768001",
                                     "rate=nan",
                                     "rate=inf",
                                     "rate=48000,0",
                                     "48000",
                                     "Rate=48000",
                                     "speed=2",
                                     "rate=48000,",
                                     "rate=48000,channels=",
                                     "rate=48000,channels=0",
                                     "rate=48000,channels=1025",
                                     "rate=48000,channels=-1",
                                     "rate=48000,channels=2x",
                                     "rate=48000channels=2",
                                     "channels=2"}) {
    EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(
        [&] { tesk_audio::FormatOfContentArgument("song", argument); },
        std::string("song: the decoder does not know the argument \"") + argument +
            "\". Give \"rate=\" and frames per second from 1000 to 768000, with \",channels=\" and their "
            "number behind it or without, or nothing."));
  }
  EXPECT_THROW(Decode("/nowhere", "rate=x"), tesk_audio::AudioSampleContentError);
}

TEST_F(ResampledFiles, OtherChannelsThanTheFileMustHaveAreRefused) {
  sound_files::Write(path_, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2, sound_files::Noise(1000, 2));
  EXPECT_EQ(Decode(path_, "rate=44100,channels=2")->GetChannelCount(), 2U);
  EXPECT_TRUE(ThrowsWithText<tesk_audio::AudioSampleContentError>(
      [&] { Decode(path_, "rate=44100,channels=1"); },
      path_ + ": it has 2 channels now and had 1 channel when the show was opened: the file has been "
              "replaced. Put the recording back as it was, or convert it to 1 channel."));
  sound_files::Write(path_, SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 1, sound_files::Noise(1000, 1));
  EXPECT_TRUE(ThrowsWithText<tesk_audio::OggVorbisDecodeError>(
      [&] { Decode(path_, "rate=44100,channels=3"); },
      path_ + ": it has 1 channel now and had 3 channels when the show was opened: the file has been "
              "replaced. Put the recording back as it was, or convert it to 3 channels."));
}

}  // namespace
