// Real files of every format, decoded to the exact frame.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>

#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"

namespace {

struct Format {
  const char* name;
  int format;
  const char* shownName;
};
void PrintTo(const Format& format, std::ostream* out) {
  *out << format.name;
}

std::string NameOf(const testing::TestParamInfo<Format>& info) {
  return info.param.name;
}

class ExactFormats : public testing::TestWithParam<Format> {
 protected:
  sound_files::TemporaryFolder folder_;
};

TEST_P(ExactFormats, EverySampleIsWhatWasWritten) {
  const test_support::CoutCapture console;
  for (const unsigned channels : {1U, 2U, 6U}) {
    const std::vector<float> written = sound_files::IndexCoded(70'001, channels);
    // The name says nothing: songs' files all bear the same extension.
    const std::string path = folder_.Path("12 Song.obd");
    sound_files::Write(path, GetParam().format, 44100, channels, written);
    const auto content = Decode(path);
    ASSERT_EQ(content->GetSampleCount(), 70'001U);
    EXPECT_EQ(content->GetChannelCount(), channels);
    EXPECT_EQ(content->GetSampleRateHz(), 44100.0);
    EXPECT_EQ(Samples(*content), written);
  }
  EXPECT_EQ(console.Text(), "");
}

TEST_P(ExactFormats, ProbeTellsTheFormat) {
  const std::string path = folder_.Path("12 Song.obd");
  sound_files::Write(path, GetParam().format, 48000, 2, sound_files::IndexCoded(5'000, 2));
  const tesk_audio::AudioFileInfo info = tesk_audio::ProbeAudioFile(path);
  EXPECT_EQ(info.frames, 5'000);
  EXPECT_EQ(info.sampleRateHz, 48000.0);
  EXPECT_EQ(info.channels, 2U);
  EXPECT_EQ(info.format, GetParam().shownName);
}

INSTANTIATE_TEST_SUITE_P(Lossless, ExactFormats,
                         testing::Values(Format{"Wav24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, "WAV"},
                                         Format{"Wav32", SF_FORMAT_WAV | SF_FORMAT_PCM_32, "WAV"},
                                         Format{"WavFloat", SF_FORMAT_WAV | SF_FORMAT_FLOAT, "WAV"},
                                         Format{"WavDouble", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, "WAV"},
                                         Format{"WavExtensible24", SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, "WAV"},
                                         Format{"Rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_24, "RF64"},
                                         Format{"Aiff24", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, "AIFF"},
                                         Format{"Flac24", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, "FLAC"},
                                         Format{"Caf24", SF_FORMAT_CAF | SF_FORMAT_PCM_24,
                                                "CAF (Apple Core Audio File)"}),
                         NameOf);

class SixteenBitFormats : public testing::TestWithParam<Format> {};

TEST_P(SixteenBitFormats, EverySampleIsWhatWasWritten) {
  const sound_files::TemporaryFolder folder;
  std::vector<float> written;
  for (int value = -32768; value <= 32767; ++value) written.push_back(static_cast<float>(value) / 32768.0F);
  sound_files::Write(folder.Path("a"), GetParam().format, 48000, 2, written);
  EXPECT_EQ(Samples(*Decode(folder.Path("a"))), written);
}

INSTANTIATE_TEST_SUITE_P(Lossless, SixteenBitFormats,
                         testing::Values(Format{"Wav16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, "WAV"},
                                         Format{"Aiff16", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, "AIFF"},
                                         Format{"Flac16", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, "FLAC"}),
                         NameOf);

// How alike two signals are when the second is read `lag` frames later: 1 is equal but for loudness.
double Likeness(const std::vector<float>& a, const std::vector<float>& b, unsigned channels, int lag) {
  double ab = 0.0;
  double aa = 0.0;
  double bb = 0.0;
  const int frames = static_cast<int>(std::min(a.size(), b.size()) / channels);
  for (int frame = 1000; frame < frames - 1000; ++frame) {
    const double x = a[static_cast<std::size_t>(frame) * channels];
    const double y = b[static_cast<std::size_t>(frame + lag) * channels];
    ab += x * y;
    aa += x * x;
    bb += y * y;
  }
  return ab / std::sqrt(aa * bb);
}

class LossyFormats : public testing::TestWithParam<Format> {};

TEST_P(LossyFormats, KeepsLengthAndPlaceToTheFrame) {
  const test_support::CoutCapture console;
  const sound_files::TemporaryFolder folder;
  // A sweep: it resembles itself at no other place.
  std::vector<float> written;
  for (int frame = 0; frame < 100'000; ++frame) {
    const double seconds = frame / 48000.0;
    const auto sample = static_cast<float>(0.4 * std::sin(2.0 * M_PI * (300.0 + 900.0 * seconds) * seconds));
    written.insert(written.end(), {sample, -sample});
  }
  sound_files::Write(folder.Path("a.obd"), GetParam().format, 48000, 2, written);
  const auto content = Decode(folder.Path("a.obd"));
  ASSERT_EQ(content->GetSampleCount(), 100'000U);
  const std::vector<float> heard = Samples(*content);
  EXPECT_GT(Likeness(written, heard, 2, 0), 0.99);
  for (const int lag : {-3, -2, -1, 1, 2, 3}) {
    EXPECT_LT(Likeness(written, heard, 2, lag), Likeness(written, heard, 2, 0)) << lag;
  }
  EXPECT_EQ(tesk_audio::ProbeAudioFile(folder.Path("a.obd")).frames, 100'000);
  EXPECT_EQ(tesk_audio::ProbeAudioFile(folder.Path("a.obd")).format, GetParam().shownName);
  EXPECT_EQ(console.Text(), "");
}

INSTANTIATE_TEST_SUITE_P(Lossy, LossyFormats,
                         testing::Values(Format{"OggVorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, "Ogg Vorbis"},
                                         Format{"OggOpus", SF_FORMAT_OGG | SF_FORMAT_OPUS, "Ogg Opus"},
                                         Format{"Mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, "MP3"}),
                         NameOf);

TEST(Content, ReadsAnyPartOfItself) {
  const sound_files::TemporaryFolder folder;
  const std::vector<float> written = sound_files::IndexCoded(140'000, 2);
  sound_files::Write(folder.Path("a"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2, written);
  const auto content = Decode(folder.Path("a"));
  struct Part {
    long long start;
    long long count;
    long long expected;
    const char* why;
  };
  for (const Part& part :
       {Part{0, 0, 0, "nothing"}, Part{0, 1, 1, "first frame"},
        Part{65'535, 2, 2, "over the edge of a block"}, Part{10, 130'000, 130'000, "blocks"},
        Part{139'999, 1, 1, "last frame"}, Part{139'990, 100, 10, "over the end"},
        Part{140'000, 5, 0, "at the end"}, Part{1LL << 62, 5, 0, "far behind the end"},
        Part{-1, 5, 0, "before the start"}, Part{5, -3, 0, "a negative count"}}) {
    std::vector<float> buffer(300'000, 7.0F);
    long long count = part.count;
    EXPECT_EQ(content->Read(part.start, &count, buffer.data()), part.expected) << part.why;
    EXPECT_EQ(count, part.expected) << part.why;
    for (long long frame = 0; frame < part.expected * 2; ++frame) {
      ASSERT_EQ(buffer[static_cast<std::size_t>(frame)],
                written[static_cast<std::size_t>(part.start * 2 + frame)])
          << part.why;
    }
    EXPECT_EQ(buffer[static_cast<std::size_t>(part.expected * 2)], 7.0F) << part.why << ": too much written";
  }
}

}  // namespace
