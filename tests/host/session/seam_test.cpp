#include "host/session/seam.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "suite/audio/audio_sample_content.h"

namespace orbel::host {
namespace {

// Interleaved frames at 1,000 frames a second, so that the window of a seam is 10 frames.
class Frames : public tesk_audio::AudioSampleContent {
 public:
  explicit Frames(std::vector<float> samples, unsigned channels = 1)
      : samples_(std::move(samples)), channels_(channels) {}
  unsigned Read(long long start, long long* count, void* buffer) const override {
    const long long frames = GetSampleCount();
    *count = start < 0 ? 0 : std::clamp<long long>(frames - start, 0, *count);
    std::copy_n(samples_.begin() + (*count > 0 ? start * channels_ : 0), *count * channels_,
                static_cast<float*>(buffer));
    return static_cast<unsigned>(*count);
  }
  unsigned GetSampleCount() const override { return static_cast<unsigned>(samples_.size() / channels_); }
  double GetSampleRateHz() const override { return 1000.0; }
  unsigned GetChannelCount() const override { return channels_; }

 private:
  std::vector<float> samples_;
  unsigned channels_;
};

std::vector<float> Saw(int frames, float step, int period) {
  std::vector<float> samples;
  for (int frame = 0; frame < frames; ++frame) samples.push_back(step * static_cast<float>(frame % period));
  return samples;
}

TEST(Seam, IsTheStepBetweenTheLastFrameBeforeAndTheFirstAfterTheJump) {
  const Frames ramp(Saw(100, 0.01F, 100));
  const Seam seam = MeasureSeam(ramp, 60, 20);
  EXPECT_FLOAT_EQ(static_cast<float>(seam.step), 0.39F) << "from frame 59 to frame 20";
  EXPECT_NEAR(seam.ownStep, 0.01, 1e-6);
  EXPECT_TRUE(seam.Clicks());
}

TEST(Seam, DoesNotClickWhereTheMusicItselfIsAsRough) {
  const Frames saw(Saw(100, 0.1F, 5));
  const Seam seam = MeasureSeam(saw, 60, 20);
  EXPECT_NEAR(seam.step, 0.4, 1e-6);
  EXPECT_NEAR(seam.ownStep, 0.4, 1e-6);
  EXPECT_FALSE(seam.Clicks());
}

TEST(Seam, OutsideTheAudioIsSilence) {
  const Frames loud(std::vector<float>(50, 0.5F));
  EXPECT_NEAR(MeasureSeam(loud, 20, 60).step, 0.5, 1e-6) << "to behind the end";
  EXPECT_NEAR(MeasureSeam(loud, 0, 10).step, 0.5, 1e-6) << "from the very start";
  EXPECT_NEAR(MeasureSeam(loud, 50, 10).step, 0.0, 1e-6) << "from the very end";
}

TEST(Seam, TheChannelThatIsWorstOffCounts) {
  std::vector<float> stereo;
  for (int frame = 0; frame < 100; ++frame) {
    stereo.push_back(0.0F);
    stereo.push_back(frame < 50 ? 0.0F : 0.25F);
  }
  const Seam seam = MeasureSeam(Frames(stereo, 2), 80, 20);
  EXPECT_NEAR(seam.step, 0.25, 1e-6);
  EXPECT_TRUE(seam.Clicks());
}

TEST(Seam, AStepThatNobodyHearsIsNoClick) {
  std::vector<float> quiet(100, 0.0F);
  std::fill(quiet.begin() + 50, quiet.end(), 0.002F);
  EXPECT_FALSE(MeasureSeam(Frames(quiet), 80, 20).Clicks());
}

}  // namespace
}  // namespace orbel::host
