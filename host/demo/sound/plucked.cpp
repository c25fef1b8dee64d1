// Strings that are plucked: a burst of noise runs round a delay line as long as the string and loses its
// edge.

#include <algorithm>
#include <cmath>

#include "host/demo/sound/envelope.h"
#include "host/demo/sound/oscillators.h"
#include "host/demo/sound/voice.h"

namespace orbel::host::demo {

namespace {

struct StringShape {
  double ringSeconds;     // until the string is 60 dB down
  float softness;         // 0.05 bright to 0.5 dull: how much each round loses of its edge
  double pickBrightness;  // hertz that the finger lets through at full strength
  double pickPosition;    // as part of the string
};

// The first round of the string: noise, softened by the finger, without the overtones that have a node there.
Sound Pluck(std::size_t length, const Tone& tone, const StringShape& shape) {
  Noise noise(tone.seed);
  LowPass finger(shape.pickBrightness * (0.3 + 0.7 * tone.strength));
  Sound burst(length);
  for (float& sample : burst) sample = finger.Next(noise.Next());
  const auto node =
      std::max<std::size_t>(1, static_cast<std::size_t>(shape.pickPosition * static_cast<double>(length)));
  Sound plucked(length);
  for (std::size_t index = 0; index < length; ++index) {
    plucked[index] = burst[index] - burst[(index + length - node % length) % length];
  }
  float peak = 1e-6F;
  for (const float sample : plucked) peak = std::max(peak, std::abs(sample));
  for (float& sample : plucked) sample *= tone.strength / peak;
  return plucked;
}

Sound RingString(const Tone& tone, const StringShape& shape, Envelope envelope) {
  // The softening filter delays by `softness` frames, the tuning filter by the fraction that is left.
  const double period = kSampleRate / tone.hertz - static_cast<double>(shape.softness);
  const auto length = static_cast<std::size_t>(period - 0.2);
  const double fraction = period - static_cast<double>(length);
  const auto tuning = static_cast<float>((1.0 - fraction) / (1.0 + fraction));
  const auto loss = static_cast<float>(std::pow(10.0, -3.0 / (shape.ringSeconds * tone.hertz)));
  Sound line = Pluck(length, tone, shape);
  Sound sound(envelope.FrameCount());
  std::size_t position = 0;
  float before = 0.0F;
  float tuningIn = 0.0F;
  float tuningOut = 0.0F;
  for (float& out : sound) {
    const float sample = line[position];
    const float softened = loss * ((1.0F - shape.softness) * sample + shape.softness * before);
    before = sample;
    tuningOut = tuning * (softened - tuningOut) + tuningIn;
    tuningIn = softened;
    line[position] = tuningOut;
    position = position + 1 == length ? 0 : position + 1;
    out = sample * envelope.Next();
  }
  return sound;
}

}  // namespace

Sound Guitar(const Tone& tone) {
  const StringShape shape{2.6, 0.32F, 5'500.0, 0.19};
  return RingString(tone, shape, Envelope({0.001, 8.0, 0.0, 0.09}, tone.seconds));
}

// A plucked double bass: the string, and the body that carries its lowest tones.
Sound Bass(const Tone& tone) {
  const StringShape shape{1.8, 0.48F, 1'400.0, 0.27};
  Sound sound = RingString(tone, shape, Envelope({0.003, 3.0, 0.0, 0.07}, tone.seconds));
  Envelope body({0.006, 0.6, 0.0, 0.07}, tone.seconds);
  SineWave first(tone.hertz);
  SineWave second(2.0 * tone.hertz);
  for (float& sample : sound) {
    const float swell = tone.strength * body.Next();
    sample = 0.35F * sample + swell * (0.75F * first.Next() + 0.22F * second.Next());
  }
  return sound;
}

}  // namespace orbel::host::demo
