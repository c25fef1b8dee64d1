// Memory that runs out at the first allocation, at the second, ... until there is enough: once, and from then
// on.
#include <gtest/gtest.h>
#include <sndfile.h>

#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/decoded.h"
#include "tests/reference_suite/audio/support/sound_files.h"
#include "tests/support/refused_allocations.h"

namespace {

using test_support::RefusedAllocations;

class OutOfMemory : public testing::TestWithParam<int> {
 protected:
  OutOfMemory() { sound_files::Write(path_, GetParam(), 48000, 2, sound_files::Noise(100'000, 2)); }

  // How many allocations had to be granted before `action` did its work. Every refusal must become the error
  // for missing memory.
  template <typename Action>
  int CountRefusals(bool forGood, Action action) {
    for (int granted = 0;; ++granted) {
      RefusedAllocations refused(RefusedAllocations::Of::ThisThread, granted, forGood);
      try {
        action();
        return granted;
      } catch (const tesk_audio::TESKAudioError& error) {
        refused.End();
        const std::string text = "there is not enough memory to decode the audio. Close other programs.";
        const std::string heard = error.what();
        EXPECT_TRUE(heard == text || heard == path_ + ": " + text) << heard;
        EXPECT_TRUE(typeid(error) == typeid(tesk_audio::TESKAudioError)) << typeid(error).name();
      }
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

INSTANTIATE_TEST_SUITE_P(Formats, OutOfMemory,
                         testing::Values(SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                                         SF_FORMAT_OGG | SF_FORMAT_VORBIS));

}  // namespace
