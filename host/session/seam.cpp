#include "host/session/seam.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "suite/audio/audio_sample_content.h"

namespace orbel::host {
namespace {

// What is looked at on either side: long enough for a period of 100 Hz.
constexpr double kWindowSeconds = 0.01;
// Steps below this are not heard, whatever the music does.
constexpr double kInaudible = 0.003;

// `count` frames from `start` on, silence where there is no audio.
std::vector<float> Frames(const tesk_audio::AudioSampleContent& content, long long start, long long count) {
  const long long channels = content.GetChannelCount();
  std::vector<float> frames(static_cast<std::size_t>(count * channels), 0.0F);
  const long long before = std::clamp(-start, 0LL, count);
  long long wanted = count - before;
  if (wanted > 0) content.Read(start + before, &wanted, frames.data() + before * channels);
  return frames;
}

double LargestStep(const std::vector<float>& frames, std::size_t channel, std::size_t channels) {
  double largest = 0.0;
  for (std::size_t index = channel + channels; index < frames.size(); index += channels) {
    largest = std::max(largest, std::fabs(static_cast<double>(frames[index]) - frames[index - channels]));
  }
  return largest;
}

}  // namespace

bool Seam::Clicks() const {
  return step > kInaudible && step > ownStep;
}

Seam MeasureSeam(const tesk_audio::AudioSampleContent& content, long long from, long long to) {
  const auto window = std::max(2LL, std::llround(kWindowSeconds * content.GetSampleRateHz()));
  const std::size_t channels = content.GetChannelCount();
  const std::vector<float> before = Frames(content, from - window, window);
  const std::vector<float> after = Frames(content, to, window);
  Seam worst;
  for (std::size_t channel = 0; channel < channels; ++channel) {
    Seam seam;
    seam.step = std::fabs(static_cast<double>(before[before.size() - channels + channel]) - after[channel]);
    seam.ownStep = std::max(LargestStep(before, channel, channels), LargestStep(after, channel, channels));
    if (seam.step - seam.ownStep > worst.step - worst.ownStep || channel == 0) worst = seam;
  }
  return worst;
}

}  // namespace orbel::host
