// How each song sounds once it has been through the encoder.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "host/demo/ogg_vorbis.h"
#include "host/demo/songs/demo_song.h"
#include "host/demo/sound/perform.h"
#include "tests/host/demo/decoded_vorbis.h"
#include "tests/host/demo/loaded_demo.h"

namespace {

using namespace orbel::host::demo;

// The step of a splice without a cross-fade, against the music's own steps around it.
void ExpectNoClick(const std::vector<float>& samples, long long from, long long to) {
  const auto at = [&](long long frame) {
    return static_cast<double>(samples.at(static_cast<std::size_t>(frame)));
  };
  double own = 0.003;  // nobody hears less
  for (long long offset = 1; offset < 480; ++offset) {
    own = std::max(own, std::abs(at(from - offset) - at(from - offset - 1)));
    own = std::max(own, std::abs(at(to + offset) - at(to + offset - 1)));
  }
  EXPECT_LE(std::abs(at(to) - at(from - 1)), own) << "from frame " << from << " to " << to;
}

class SongAudio : public testing::TestWithParam<std::size_t> {
 protected:
  const LoadedDemo demo_;
  const DemoSong song_ = AllSongs().at(GetParam());
  const DecodedVorbis audio_ =
      DecodeVorbis(EncodeOggVorbis(Perform(song_.score, song_.audioStart, song_.audioEnd), {1, song_.name}));
};

TEST_P(SongAudio, IsAsLongAsTheEngineCountsAndThreeDecibelsBelowFullScaleAndItsJumpsDoNotClick) {
  SCOPED_TRACE(song_.name);
  ASSERT_TRUE(audio_.opened);
  EXPECT_EQ(static_cast<long long>(audio_.left.size()), demo_.FrameAt(song_.number, song_.audioEnd));

  float peak = 0.0F;
  double energy = 0.0;
  for (const auto* channel : {&audio_.left, &audio_.right}) {
    ASSERT_TRUE(
        std::all_of(channel->begin(), channel->end(), [](float sample) { return std::isfinite(sample); }));
    for (const float sample : *channel) {
      peak = std::max(peak, std::abs(sample));
      energy += static_cast<double>(sample * sample);
    }
  }
  EXPECT_GT(peak, 0.63F) << "less than -4 dB";
  EXPECT_LT(peak, 0.80F) << "more than -2 dB";
  EXPECT_GT(std::sqrt(energy / (2.0 * static_cast<double>(audio_.left.size()))), 0.05) << "hardly heard";

  for (const auto& [from, to] : demo_.Jumps(song_.number)) {
    for (const auto* channel : {&audio_.left, &audio_.right}) {
      ExpectNoClick(*channel, demo_.FrameAt(song_.number, from), demo_.FrameAt(song_.number, to));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Songs, SongAudio, testing::Range<std::size_t>(0, 7));

TEST(SongAudioList, HasEverySong) {
  EXPECT_EQ(AllSongs().size(), 7u);
}

}  // namespace
