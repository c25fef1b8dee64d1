#include "reference_suite/audio/encode/sound_file_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <map>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/running_clock.h"
#include "tests/reference_suite/audio/support/sound_files.h"

namespace tesk_audio {
namespace {

using sound_files::Bytes;
using testing::HasSubstr;

constexpr SoundFileFormat kFormats[] = {SoundFileFormat::Float, SoundFileFormat::Pcm24,
                                        SoundFileFormat::Pcm16, SoundFileFormat::Flac,
                                        SoundFileFormat::OggVorbis};

class Writer : public testing::TestWithParam<SoundFileFormat> {
 protected:
  void WriteAll(const std::vector<float>& samples, unsigned channels, double rateHz = 48000.0) {
    SoundFileWriter writer(path_, GetParam(), rateHz, channels);
    writer.Write(samples.data(), samples.size() / channels);
    writer.Commit();
  }

  sound_files::TemporaryFolder folder_;
  const std::string path_ = folder_.Path("out");
};

std::string NameOf(const testing::TestParamInfo<SoundFileFormat>& format) {
  static constexpr const char* kNames[] = {"Float", "Pcm24", "Pcm16", "Flac", "OggVorbis"};
  return kNames[static_cast<int>(format.param)];
}
INSTANTIATE_TEST_SUITE_P(EveryFormat, Writer, testing::ValuesIn(kFormats), NameOf);

// Every value that 16 bits hold, so that an error of a single step shows, wherever in the scale it lies.
std::vector<float> EveryStepOfSixteenBits() {
  std::vector<float> samples;
  for (int value = -32768; value < 32768; ++value) samples.push_back(static_cast<float>(value) / 32768.0F);
  return samples;
}

double NoiseBelowSignal(const std::vector<float>& signal, const std::vector<float>& heard) {
  double power = 0.0;
  double noise = 0.0;
  for (std::size_t index = 0; index < signal.size(); ++index) {
    power += static_cast<double>(signal[index]) * signal[index];
    noise += std::pow(static_cast<double>(signal[index]) - heard[index], 2);
  }
  return 10.0 * std::log10(power / noise);
}

TEST_P(Writer, WhatIsReadBackIsWhatWasWritten) {
  const bool lossy = GetParam() == SoundFileFormat::OggVorbis;
  const std::vector<float> samples = lossy ? sound_files::Sines(32768, 2, 44100.0) : EveryStepOfSixteenBits();
  WriteAll(samples, 2, 44100.0);
  const auto content = Decode(path_);
  EXPECT_EQ(content->GetSampleRateHz(), 44100.0);
  EXPECT_EQ(content->GetChannelCount(), 2U);
  const std::vector<float> read = Samples(*content);
  ASSERT_EQ(read.size(), samples.size());
  if (lossy) {
    EXPECT_GT(NoiseBelowSignal(samples, read), 20.0) << "dB";
  } else {
    EXPECT_EQ(read, samples);
  }
}

TEST_P(Writer, TheSameFramesGiveTheSameBytesHoweverTheyComeAndWhenever) {
  const std::vector<float> samples = sound_files::Sines(30000, 2, 48000.0);
  WriteAll(samples, 2);
  const std::string once = Bytes(path_);
  running_clock::aheadSeconds = 100'000;
  SoundFileWriter writer(path_, GetParam(), 48000.0, 2);
  for (std::size_t done = 0; done < 30000; done += 1000) writer.Write(samples.data() + 2 * done, 1000);
  writer.Commit();
  running_clock::aheadSeconds = 0;
  EXPECT_TRUE(Bytes(path_) == once);
}

TEST_P(Writer, AFileHasItsNameOnlyWhenItIsComplete) {
  const std::vector<float> samples = sound_files::Sines(8192, 1, 48000.0);
  {
    SoundFileWriter writer(path_, GetParam(), 48000.0, 1);
    writer.Write(samples.data(), samples.size());
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_TRUE(std::filesystem::exists(path_ + ".part"));
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path())) << "a writer that goes leaves nothing";
  WriteAll(samples, 1);
  EXPECT_TRUE(std::filesystem::exists(path_));
  EXPECT_FALSE(std::filesystem::exists(path_ + ".part"));
}

TEST_P(Writer, WhatHadTheNameBeforeStaysUntilThen) {
  sound_files::WriteBytes(path_, "before");
  { const SoundFileWriter writer(path_, GetParam(), 48000.0, 1); }
  EXPECT_EQ(Bytes(path_), "before");
  WriteAll(sound_files::Sines(8192, 1, 48000.0), 1);
  EXPECT_EQ(Samples(*Decode(path_)).size(), 8192U);
}

TEST_P(Writer, NoFramesAreAFileTooWhereTheFormatKnowsSuch) {
  if (GetParam() == SoundFileFormat::Flac) {
    try {
      WriteAll({}, 1);
      FAIL();
    } catch (const TESKAudioError& error) {
      EXPECT_EQ(error.what(),
                path_ + ": cannot be written: this format needs at least one frame. Choose another format.");
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
    return;
  }
  WriteAll({}, 1);
  EXPECT_GT(Bytes(path_).size(), 0U);
  EXPECT_THROW(Decode(path_), TESKAudioError) << "a song needs frames; the file says that it has none";
}

TEST_P(Writer, AFolderThatIsNotThereIsAnErrorThatNamesTheFile) {
  try {
    SoundFileWriter(folder_.Path("no/out"), GetParam(), 48000.0, 1);
    FAIL();
  } catch (const TESKAudioError& error) {
    EXPECT_EQ(error.what(),
              folder_.Path("no/out") +
                  ": cannot be written: No such file or directory. Choose another place, or make room.");
  }
}

TEST(SoundFileWriter, TheEndingOfANameSaysWhatIsWritten) {
  EXPECT_EQ(FormatOfName("/a/take.wav"), SoundFileFormat::Float);
  EXPECT_EQ(FormatOfName("TAKE.WAV"), SoundFileFormat::Float);
  EXPECT_EQ(FormatOfName("take.wav.Flac"), SoundFileFormat::Flac);
  EXPECT_EQ(FormatOfName("take.ogg"), SoundFileFormat::OggVorbis);
  for (const char* name : {"", "wav", "take", "take.mp3", "take.wav ", "take.wav/", "ogg", "a.flac/take"}) {
    EXPECT_EQ(FormatOfName(name), std::nullopt) << name;
  }
}

TEST(SoundFileWriter, IntegerFormatsClipAndTakeTheNearestStep) {
  const sound_files::TemporaryFolder folder;
  const std::string path = folder.Path("out");
  const float step = 1.0F / 32768.0F;
  const std::vector<float> samples{
      1.5F, -1.5F, 1.0F, std::numeric_limits<float>::quiet_NaN(), 0.6F * step, -0.6F * step, 0.4F * step};
  SoundFileWriter writer(path, SoundFileFormat::Pcm16, 48000.0, 1);
  writer.Write(samples.data(), samples.size());
  writer.Commit();
  EXPECT_EQ(Samples(*Decode(path)),
            (std::vector<float>{32767.0F * step, -1.0F, 32767.0F * step, 0.0F, step, -step, 0.0F}));
}

TEST(SoundFileWriter, FloatKeepsWhatLiesBeyondFullScale) {
  const sound_files::TemporaryFolder folder;
  const std::vector<float> samples{4.0F, -4.0F, 1e-30F};
  SoundFileWriter writer(folder.Path("out"), SoundFileFormat::Float, 48000.0, 1);
  writer.Write(samples.data(), samples.size());
  writer.Commit();
  EXPECT_EQ(Samples(*Decode(folder.Path("out"))), samples);
}

TEST(SoundFileWriter, WhatAFormatCannotHoldIsSaidAndLeavesNothing) {
  const sound_files::TemporaryFolder folder;
  try {
    SoundFileWriter(folder.Path("out"), SoundFileFormat::Flac, 48000.0, 9);
    FAIL();
  } catch (const TESKAudioError& error) {
    EXPECT_THAT(error.what(), testing::StartsWith(folder.Path("out") + ": cannot be written: "));
    EXPECT_THAT(error.what(), testing::EndsWith(" Choose another format or another rate."));
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

}  // namespace
}  // namespace tesk_audio
