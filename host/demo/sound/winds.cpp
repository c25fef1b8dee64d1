// Winds: a few overtones, breath, and a vibrato that sets in late.

#include <algorithm>
#include <array>

#include "host/demo/sound/envelope.h"
#include "host/demo/sound/oscillators.h"
#include "host/demo/sound/voice.h"

namespace orbel::host::demo {

namespace {

struct WindShape {
  EnvelopeShape breath;
  std::array<float, 7> overtones;  // level of each, the fundamental first
  float noise;
  double vibratoDepth;
};

Sound Blow(const Tone& tone, const WindShape& shape) {
  Envelope breath(shape.breath, tone.seconds);
  SineWave vibrato(5.3);
  Noise noise(tone.seed);
  LowPass air(3'000.0);
  const float rising = 1.0F / (0.5F * kSampleRate);
  float vibratoLevel = 0.0F;
  double phase = 0.0;
  Sound sound(breath.FrameCount());
  for (float& sample : sound) {
    float sum = shape.noise * air.Next(noise.Next());
    for (std::size_t index = 0; index < shape.overtones.size(); ++index) {
      if (tone.hertz * static_cast<double>(index + 1) > 0.4 * kSampleRate) break;
      // Overtones beyond the second come out with strength only.
      const float level = shape.overtones[index] * (index < 2 ? 1.0F : tone.strength);
      sum += level * SineWave::At(phase * static_cast<double>(index + 1));
    }
    sample = tone.strength * breath.Next() * sum;
    vibratoLevel = std::min(1.0F, vibratoLevel + rising);
    const double sway = shape.vibratoDepth * static_cast<double>(vibratoLevel * vibrato.Next());
    phase += tone.hertz / kSampleRate * (1.0 + sway);
  }
  return sound;
}

}  // namespace

Sound Flute(const Tone& tone) {
  return Blow(tone,
              {{0.045, 0.5, 0.88, 0.09}, {0.72F, 0.26F, 0.12F, 0.05F, 0.02F, 0.0F, 0.0F}, 0.05F, 0.0045});
}

Sound Clarinet(const Tone& tone) {
  return Blow(tone,
              {{0.030, 0.5, 0.86, 0.06}, {0.64F, 0.03F, 0.38F, 0.03F, 0.20F, 0.02F, 0.11F}, 0.02F, 0.0022});
}

}  // namespace orbel::host::demo
