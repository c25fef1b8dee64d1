// Memory that runs out at the first allocation, at the second, ... until there is enough: once, and from then
// on.
#include <gtest/gtest.h>
#include <sndfile.h>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/refused_allocations.h"
#include "tests/support/segment_settings.h"

namespace {

using test_support::RefusedAllocations;

class OutOfMemory : public testing::TestWithParam<int> {
 protected:
  OutOfMemory() { sound_files::Write(path_, GetParam(), 48000, 2, sound_files::Noise(100'000, 2)); }

  // Whether `action` did its work all the same. A refusal that it notices must become the error for missing
  // memory.
  template <typename Action>
  bool IsDoneWith(RefusedAllocations* refused, Action action) {
    try {
      action();
      refused->End();
      return true;
    } catch (const tesk_audio::TESKAudioError& error) {
      refused->End();
      const std::string text = "there is not enough memory to decode the audio. Close other programs.";
      const std::string heard = error.what();
      EXPECT_TRUE(heard == text || heard == path_ + ": " + text) << heard;
      EXPECT_TRUE(typeid(error) == typeid(tesk_audio::TESKAudioError)) << typeid(error).name();
      return false;
    }
  }
  // How many allocations had to be granted before `action` did its work.
  template <typename Action>
  int CountRefusals(bool forGood, Action action) {
    for (int granted = 0;; ++granted) {
      RefusedAllocations refused(RefusedAllocations::Of::ThisThread, granted, forGood);
      if (IsDoneWith(&refused, action)) return granted;
    }
  }

  sound_files::TemporaryFolder folder_;
  std::string path_ = folder_.Path("a name that is too long to be kept inside the string itself");
};

TEST_P(OutOfMemory, DecodingRefusesInWords) {
  for (const bool forGood : {false, true}) {
    const int granted = CountRefusals(forGood, [this] { Decode(path_); });
    EXPECT_GT(granted, 5);
  }
  EXPECT_EQ(Decode(path_)->GetSampleCount(), 100'000U);
}

TEST_P(OutOfMemory, ResamplingRefusesInWords) {
  EXPECT_GT(CountRefusals(false, [this] { Decode(path_, "rate=44100"); }), 5);
}

TEST_P(OutOfMemory, ProbingRefusesInWords) {
  for (const bool forGood : {false, true}) {
    EXPECT_GT(CountRefusals(forGood, [this] { tesk_audio::ProbeAudioFile(path_); }), 2);
  }
}

class OutOfMemoryInSegments : public OutOfMemory {
 protected:
  OutOfMemoryInSegments() {
    test_support::decodingSettings = {4.0, 3};
    sound_files::Write(path_, GetParam(), 48000, 2, sound_files::Noise(kFrames, 2));
  }
  ~OutOfMemoryInSegments() override { test_support::decodingSettings = {}; }

  static constexpr unsigned kFrames = 900'000;
};

// Where a segment has none the decoding from first to last goes on, and may have some.
TEST_P(OutOfMemoryInSegments, DecodingRefusesInWordsOrIsComplete) {
  const std::vector<float> whole = Samples(*Decode(path_));
  ASSERT_EQ(whole.size(), 2U * kFrames);
  for (const bool forGood : {false, true}) {
    int refusals = 0;
    for (int granted = 0;; ++granted) {
      RefusedAllocations refused(RefusedAllocations::Of::AllThreads, granted, forGood);
      std::unique_ptr<tesk_audio::AudioSampleContent> content;
      if (IsDoneWith(&refused, [&] { content = Decode(path_); })) {
        ASSERT_TRUE(Samples(*content) == whole) << granted;
      } else {
        ++refusals;
      }
      if (refused.Count() == 0) break;  // there was enough for everything
      ASSERT_LT(granted, 10'000);
    }
    EXPECT_GT(refusals, 10);
  }
}

constexpr int kFormats[] = {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                            SF_FORMAT_OGG | SF_FORMAT_VORBIS};
INSTANTIATE_TEST_SUITE_P(Formats, OutOfMemory, testing::ValuesIn(kFormats));
INSTANTIATE_TEST_SUITE_P(Formats, OutOfMemoryInSegments, testing::ValuesIn(kFormats));

}  // namespace
