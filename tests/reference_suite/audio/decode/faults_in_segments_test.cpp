// Files that somebody changes, disks that fail and threads that are refused while a file is decoded in
// several places at once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/file_calls.h"
#include "tests/reference_suite/audio/support/refused_threads.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/cout_capture.h"
#include "tests/support/segment_settings.h"
#include "tests/support/throws_with_text.h"

namespace {

constexpr unsigned kFrames = 900'000;  // three segments of two channels
constexpr int kThreads = 3;            // on which they are decoded; the caller waits for them

class FaultsInSegments : public testing::TestWithParam<int> {
 protected:
  FaultsInSegments() {
    test_support::decodingSettings = {4.0, kThreads};
    sound_files::Write(path_, GetParam(), 48000, 2, sound_files::Noise(kFrames, 2));
    refused_threads::Refuse(0, false);
    file_calls::Reset();
    whole_ = Samples(*Decode(path_));
    reads_ = file_calls::readCount;
    EXPECT_GT(reads_, 10);
    EXPECT_EQ(whole_.size(), 2U * kFrames);
    EXPECT_EQ(refused_threads::Asked(), kThreads) << "so that this is about segments";
  }
  ~FaultsInSegments() override {
    file_calls::Reset();
    refused_threads::Refuse(0, false);
    test_support::decodingSettings = {};
  }
  // After that part of all the reads of a whole decoding.
  void Happens(double part, std::function<void()> what) const {
    file_calls::Reset();
    file_calls::happensAtRead = static_cast<int>(part * reads_);
    file_calls::happens = std::move(what);
  }
  void FailReads(double part, int times) const {
    file_calls::failReadsFrom = Bytes_(part);
    file_calls::failuresLeft = times;
  }
  void ExpectPlaysWhole(const std::string& what) const {
    const test_support::CoutCapture console;
    EXPECT_TRUE(Samples(*Decode(path_)) == whole_) << what;
    EXPECT_EQ(console.Text(), "") << what;
    EXPECT_FALSE(file_calls::happens) << what << ": while it was read";
  }

  static constexpr double kPlaces[] = {0.1, 0.3, 0.5, 0.6, 0.7, 0.8, 0.9};
  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("song");
  std::vector<float> whole_;
  int reads_ = 0;

 private:
  long long Bytes_(double part) const {
    return static_cast<long long>(static_cast<double>(std::filesystem::file_size(path_)) * part);
  }
};

TEST_P(FaultsInSegments, ReplacedOrRemovedItPlaysAsItWas) {
  const std::string bytes = sound_files::Bytes(path_);
  for (const double part : kPlaces) {
    Happens(part, [this] {
      sound_files::WriteBytes(folder_.Path("new"), "no audio at all");
      std::filesystem::rename(folder_.Path("new"), path_);
    });
    ExpectPlaysWhole("replaced");
    sound_files::WriteBytes(path_, bytes);
    Happens(part, [this] { std::filesystem::remove(path_); });
    ExpectPlaysWhole("removed");
    sound_files::WriteBytes(path_, bytes);
  }
}

TEST_P(FaultsInSegments, CutOffItPlaysWhatWasThereAndSaysHowMuch) {
  const std::string bytes = sound_files::Bytes(path_);
  int shortened = 0;
  for (const double part : kPlaces) {
    Happens(part, [this] { std::filesystem::resize_file(path_, std::filesystem::file_size(path_) / 2); });
    const test_support::CoutCapture console;
    const std::vector<float> heard = Samples(*Decode(path_));
    if (heard == whole_) {  // all had been read before
      EXPECT_EQ(console.Text(), "");
    } else {
      ++shortened;
      EXPECT_GT(heard.size(), whole_.size() / 4) << part;
      EXPECT_LT(heard.size(), whole_.size()) << part;
      // What the library makes of the place of the cut is not the song any more.
      const auto like = std::mismatch(heard.begin(), heard.end(), whole_.begin()).first - heard.begin();
      EXPECT_GT(like, static_cast<std::ptrdiff_t>(heard.size()) - 20'000) << part;
      EXPECT_THAT(console.Text(), testing::StartsWith("WARNING: " + path_ + ": "));
      EXPECT_THAT(console.Text(), testing::AnyOf(testing::HasSubstr("cut off"),
                                                 testing::HasSubstr(" of 900000 frames could be decoded")));
    }
    sound_files::WriteBytes(path_, bytes);
  }
  EXPECT_GT(shortened, 2);
}

TEST_P(FaultsInSegments, OverwrittenItPlaysOrIsRefusedInWords) {
  const std::string bytes = sound_files::Bytes(path_);
  for (const double part : kPlaces) {
    Happens(part, [&] { sound_files::WriteBytes(path_, std::string(bytes.size(), '\xA5')); });
    const test_support::CoutCapture console;
    try {
      const std::vector<float> heard = Samples(*Decode(path_));
      EXPECT_FALSE(heard.empty());
      // Whatever stands where a WAV has its samples is samples.
      const bool isWav = GetParam() == (SF_FORMAT_WAV | SF_FORMAT_PCM_16);
      EXPECT_TRUE(isWav || heard == whole_ || !console.Text().empty()) << part;
    } catch (const tesk_audio::TESKAudioError& error) {
      EXPECT_EQ(std::string(error.what()).find(path_ + ": "), 0U) << error.what();
    }
    sound_files::WriteBytes(path_, bytes);
  }
}

TEST_P(FaultsInSegments, AReadErrorAnywhereIsTheFiles) {
  for (const double part : kPlaces) {
    FailReads(part, std::numeric_limits<int>::max());
    EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
        [this] { Decode(path_); },
        path_ + ": the file cannot be read: Input/output error. Check the disk and copy the file again."))
        << part;
    file_calls::Reset();
    ExpectPlaysWhole("afterwards");
  }
}

// Whatever thread meets it: the song is there, or is refused in words; never a part of it.
TEST_P(FaultsInSegments, AReadErrorThatPassesCostsNoSample) {
  int played = 0;
  for (const double part : {0.55, 0.6, 0.7, 0.8, 0.9}) {
    FailReads(part, 1);
    const test_support::CoutCapture console;
    try {
      EXPECT_TRUE(Samples(*Decode(path_)) == whole_) << part;
      ++played;
    } catch (const tesk_audio::TESKAudioError& error) {
      EXPECT_NE(std::string(error.what()).find("Input/output error"), std::string::npos) << error.what();
    }
    EXPECT_EQ(console.Text(), "") << part;
    file_calls::Reset();
  }
  RecordProperty("played", played);
}

TEST_P(FaultsInSegments, ReadsThatAreInterruptedAreTriedAgain) {
  file_calls::interruptedReads = 30;
  ExpectPlaysWhole("interrupted");
}

TEST_P(FaultsInSegments, ThreadsThatAreRefusedCostNoSample) {
  for (const bool forGood : {false, true}) {
    for (int nth = 1; nth <= kThreads; ++nth) {
      refused_threads::Refuse(nth, forGood);
      ExpectPlaysWhole("thread " + std::to_string(nth));
      EXPECT_GE(refused_threads::Asked(), nth);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, FaultsInSegments,
                         testing::Values(SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                                         SF_FORMAT_OGG | SF_FORMAT_VORBIS));

}  // namespace
