#include "host/demo/sound/master.h"

#include <algorithm>
#include <cmath>

#include "host/demo/sound/oscillators.h"

namespace orbel::host::demo {

namespace {

constexpr double kLowestHertz = 24.0;
constexpr float kDrive = 1.5F;  // how far the loudest peaks reach into the rounding
constexpr double kFadeSeconds = 0.02;
constexpr float kSilence = 1e-9F;  // what an empty room holds is not to be made audible

float PeakOf(const StereoSound& sound) {
  float peak = 0.0F;
  for (const auto* channel : {&sound.left, &sound.right}) {
    for (const float sample : *channel) peak = std::max(peak, std::abs(sample));
  }
  return peak;
}

void RoundOff(std::vector<float>& channel, float gain) {
  for (float& sample : channel) sample = std::tanh(gain * sample);
}

void FadeOut(std::vector<float>& channel) {
  const std::size_t count = std::min(FramesOfSeconds(kFadeSeconds), channel.size());
  for (std::size_t index = 0; index < count; ++index) {
    channel[channel.size() - 1 - index] *= static_cast<float>(index) / static_cast<float>(count);
  }
}

}  // namespace

void Master(StereoSound& sound) {
  for (auto* channel : {&sound.left, &sound.right}) {
    HighPass rumble(kLowestHertz);
    for (float& sample : *channel) sample = rumble.Next(sample);
    FadeOut(*channel);
  }
  const float peak = PeakOf(sound);
  if (peak < kSilence) return;
  const float gain = kMasterPeak / std::tanh(kDrive);
  for (auto* channel : {&sound.left, &sound.right}) {
    RoundOff(*channel, kDrive / peak);
    for (float& sample : *channel) sample *= gain;
  }
}

}  // namespace orbel::host::demo
