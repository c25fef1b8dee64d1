// Files that somebody changes while they are decoded.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <filesystem>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/file_calls.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"

namespace {

constexpr unsigned kFrames = 500'000;

class ChangingFiles : public testing::TestWithParam<int> {
 protected:
  ChangingFiles() {
    sound_files::Write(path_, GetParam(), 48000, 2, sound_files::Noise(kFrames, 2));
    file_calls::happensBehind = static_cast<long long>(std::filesystem::file_size(path_)) / 2;
  }
  ~ChangingFiles() override { file_calls::Reset(); }

  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("song");
};

// Whoever saves it anew by way of another file does no harm: what was opened is read to its end.
TEST_P(ChangingFiles, ReplacedByAnotherItPlaysAsItWas) {
  const auto before = Decode(path_);
  file_calls::happens = [this] {
    sound_files::WriteBytes(folder_.Path("new"), "no audio at all");
    std::filesystem::rename(folder_.Path("new"), path_);
  };
  const test_support::CoutCapture console;
  const auto content = Decode(path_);
  EXPECT_FALSE(file_calls::happens) << "while it was read";
  EXPECT_EQ(Samples(*content), Samples(*before));
  EXPECT_EQ(console.Text(), "");
}

TEST_P(ChangingFiles, RemovedItPlaysAsItWas) {
  file_calls::happens = [this] { std::filesystem::remove(path_); };
  const test_support::CoutCapture console;
  EXPECT_EQ(Decode(path_)->GetSampleCount(), kFrames);
  EXPECT_EQ(console.Text(), "");
}

TEST_P(ChangingFiles, CutOffItPlaysWhatWasThereAndSaysHowMuch) {
  file_calls::happens = [this] {
    std::filesystem::resize_file(path_, std::filesystem::file_size(path_) / 2);
  };
  const test_support::CoutCapture console;
  const auto content = Decode(path_);
  EXPECT_GT(content->GetSampleCount(), kFrames / 4);
  EXPECT_LT(content->GetSampleCount(), kFrames);
  // Of Ogg the end is looked for first, and the length is that of what is left.
  const bool isOgg = GetParam() == (SF_FORMAT_OGG | SF_FORMAT_VORBIS);
  const std::string words =
      isOgg ? "the Ogg stream has no end: the file was cut off"
            : "only " + std::to_string(content->GetSampleCount()) + " of 500000 frames could be decoded";
  EXPECT_EQ(console.Text(), "WARNING: " + path_ + ": " + words + ".\n");
}

// Where the library has seen a page it looks for one until it finds it, had it not been told to stop.
TEST_P(ChangingFiles, OverwrittenOrEmptiedItPlaysOrIsRefusedInWords) {
  const std::string song = sound_files::Bytes(path_);
  for (const std::size_t left : {song.size(), std::size_t{0}}) {
    sound_files::WriteBytes(path_, song);
    file_calls::happens = [&] { sound_files::WriteBytes(path_, std::string(left, '\xA5')); };
    const test_support::CoutCapture console;
    try {
      EXPECT_GT(Decode(path_)->GetSampleCount(), 0U);
      EXPECT_NE(GetParam(), SF_FORMAT_OGG | SF_FORMAT_VORBIS) << "its end is looked at while it is opened";
    } catch (const tesk_audio::TESKAudioError& error) {
      EXPECT_EQ(std::string(error.what()).find(path_ + ": the "), 0U) << error.what();
    }
    EXPECT_FALSE(file_calls::happens) << "while it was read";
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, ChangingFiles,
                         testing::Values(SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                                         SF_FORMAT_OGG | SF_FORMAT_VORBIS));

}  // namespace
