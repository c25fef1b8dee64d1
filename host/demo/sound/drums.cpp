// A light kit: skins are falling sines, wires and metal are filtered noise.

#include <cmath>

#include "host/demo/sound/envelope.h"
#include "host/demo/sound/oscillators.h"
#include "host/demo/sound/voice.h"

namespace orbel::host::demo {

namespace {

// A skin whose pitch falls from `highest` to `lowest` hertz within `fallSeconds`.
Sound Skin(double highest, double lowest, double fallSeconds, double decaySeconds, float level) {
  Envelope loudness({0.0008, decaySeconds, 0.0, 0.05}, 3.0 * decaySeconds);
  const double fall = std::exp(-1.0 / (fallSeconds * kSampleRate));
  double above = highest - lowest;
  double phase = 0.0;
  Sound sound(loudness.FrameCount());
  for (float& sample : sound) {
    sample = level * loudness.Next() * SineWave::At(phase);
    phase += (lowest + above) / kSampleRate;
    above *= fall;
  }
  return sound;
}

// Noise between two pitches.
Sound Hiss(double lowest, double highest, EnvelopeShape shape, float level, std::uint32_t seed) {
  Envelope loudness(shape, 3.0 * shape.decay);
  Noise noise(seed);
  HighPass first(lowest);
  HighPass second(lowest);
  LowPass top(highest);
  Sound sound(loudness.FrameCount());
  for (float& sample : sound) {
    sample = level * loudness.Next() * top.Next(second.Next(first.Next(noise.Next())));
  }
  return sound;
}

Sound Both(Sound longer, const Sound& shorter) {
  if (longer.size() < shorter.size()) return Both(shorter, longer);
  for (std::size_t index = 0; index < shorter.size(); ++index) longer[index] += shorter[index];
  return longer;
}

Sound Block(double hertz, float level) {
  return Both(Skin(hertz * 1.04, hertz, 0.01, 0.035, level),
              Skin(hertz * 2.7, hertz * 2.6, 0.01, 0.012, 0.4F * level));
}

}  // namespace

Sound Drum(int key, float strength, std::uint32_t seed) {
  switch (key) {
    case 36:  // bass drum
      return Both(Skin(128.0, 46.0, 0.028, 0.11, 0.95F * strength),
                  Hiss(900.0, 4'000.0, {0.0005, 0.004, 0.0, 0.01}, 0.3F * strength, seed));
    case 37:  // side stick
      return Both(Block(1'680.0, 0.45F * strength),
                  Hiss(1'200.0, 7'000.0, {0.0005, 0.008, 0.0, 0.02}, 0.4F * strength, seed));
    case 38:  // snare
      return Both(Skin(240.0, 182.0, 0.02, 0.05, 0.5F * strength),
                  Hiss(1'100.0, 9'000.0, {0.0008, 0.065, 0.0, 0.06}, 0.75F * strength, seed));
    case 40:  // brush on the snare
      return Hiss(1'500.0, 7'000.0, {0.018, 0.06, 0.0, 0.08}, 0.5F * strength, seed);
    case 42:  // closed hi-hat
      return Hiss(6'500.0, 16'000.0, {0.0005, 0.018, 0.0, 0.02}, 0.6F * strength, seed);
    case 46:  // open hi-hat
      return Hiss(6'000.0, 16'000.0, {0.0008, 0.13, 0.0, 0.1}, 0.5F * strength, seed);
    case 49:  // crash
      return Hiss(3'200.0, 14'000.0, {0.002, 0.42, 0.0, 0.4}, 0.55F * strength, seed);
    case 54:  // tambourine
      return Hiss(5'000.0, 15'000.0, {0.004, 0.045, 0.0, 0.05}, 0.5F * strength, seed);
    case 70:  // shaker
      return Hiss(4'200.0, 12'000.0, {0.012, 0.022, 0.0, 0.03}, 0.4F * strength, seed);
    case 76:  // wood block
      return Block(880.0, 0.6F * strength);
    case 77:  // low wood block
      return Block(620.0, 0.6F * strength);
    default:
      return {};
  }
}

}  // namespace orbel::host::demo
