#include "host/demo/ogg_vorbis.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/demo/sound/oscillators.h"
#include "tests/host/demo/decoded_vorbis.h"

namespace {

using namespace orbel::host::demo;

StereoSound TwoTones(std::size_t frameCount) {
  StereoSound sound(frameCount);
  SineWave low(220.0);
  SineWave high(880.0);
  for (std::size_t index = 0; index < frameCount; ++index) {
    sound.left[index] = 0.5F * low.Next();
    sound.right[index] = 0.25F * high.Next();
  }
  return sound;
}

class OggVorbisLength : public testing::TestWithParam<std::size_t> {};

TEST_P(OggVorbisLength, DecodesToTheSameNumberOfFrames) {
  const DecodedVorbis decoded = DecodeVorbis(EncodeOggVorbis(TwoTones(GetParam()), {5, "Tones"}));
  ASSERT_TRUE(decoded.opened);
  EXPECT_EQ(decoded.promisedFrames, static_cast<long long>(GetParam()));
  EXPECT_EQ(decoded.left.size(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Lengths, OggVorbisLength,
                         testing::Values(1, 100, 1023, 1024, 1025, 48'000, 123'457));

TEST(OggVorbis, CarriesItsFormatSerialAndTitle) {
  const DecodedVorbis decoded = DecodeVorbis(EncodeOggVorbis(TwoTones(5000), {77, "Two Tones"}));
  EXPECT_EQ(decoded.rate, 48'000);
  EXPECT_EQ(decoded.channels, 2);
  EXPECT_EQ(decoded.serial, 77);
  EXPECT_EQ(decoded.title, "Two Tones");
}

TEST(OggVorbis, SoundsLikeWhatWentIn) {
  const StereoSound sound = TwoTones(48'000);
  const DecodedVorbis decoded = DecodeVorbis(EncodeOggVorbis(sound, {1, ""}));
  ASSERT_EQ(decoded.left.size(), sound.FrameCount());
  double difference = 0.0;
  for (std::size_t index = 0; index < sound.FrameCount(); ++index) {
    difference += std::pow(static_cast<double>(decoded.left[index] - sound.left[index]), 2);
    difference += std::pow(static_cast<double>(decoded.right[index] - sound.right[index]), 2);
  }
  EXPECT_LT(std::sqrt(difference / (2.0 * 48'000)), 0.01);
}

TEST(OggVorbis, TheSameSoundGivesTheSameBytes) {
  EXPECT_EQ(EncodeOggVorbis(TwoTones(20'000), {1, "T"}), EncodeOggVorbis(TwoTones(20'000), {1, "T"}));
}

}  // namespace
