// Instruments with a keyboard.

#include "host/demo/sound/envelope.h"
#include "host/demo/sound/oscillators.h"
#include "host/demo/sound/voice.h"

namespace orbel::host::demo {

// A tine and its tone bar: one sine bends the phase of another, most strongly at the stroke.
Sound ElectricPiano(const Tone& tone) {
  Envelope loudness({0.002, 0.9, 0.0, 0.16}, tone.seconds);
  Envelope edge({0.001, 0.22, 0.12, 0.16}, tone.seconds);
  Envelope stroke({0.001, 0.03, 0.0, 0.05}, tone.seconds);
  SineWave bender(tone.hertz);
  SineWave tine(14.0 * tone.hertz);
  SineWave tremolo(4.6);
  const bool tineIsAudible = 14.0 * tone.hertz < 0.4 * kSampleRate;
  Sound sound(loudness.FrameCount());
  double phase = 0.0;
  for (float& sample : sound) {
    const float bend = 0.24F * tone.strength * edge.Next() * bender.Next();
    const float ping = tineIsAudible ? 0.10F * tone.strength * stroke.Next() * tine.Next() : 0.0F;
    const float sway = 1.0F + 0.08F * tremolo.Next();
    sample =
        tone.strength * sway * (loudness.Next() * SineWave::At(phase + static_cast<double>(bend)) + ping);
    phase += tone.hertz / kSampleRate;
  }
  return sound;
}

// Two reeds that are not quite in tune.
Sound Accordion(const Tone& tone) {
  Envelope bellows({0.028, 0.4, 0.82, 0.07}, tone.seconds);
  SawWave reed(tone.hertz * 0.9988, 0.1);
  SawWave other(tone.hertz * 1.0016, 0.6);
  SineWave fundamental(tone.hertz);
  LowPass body(1'500.0 + 2'200.0 * tone.strength);
  LowPass box(5'200.0);
  Sound sound(bellows.FrameCount());
  for (float& sample : sound) {
    const float reeds = 0.34F * (reed.Next() + other.Next()) + 0.25F * fundamental.Next();
    sample = tone.strength * bellows.Next() * box.Next(body.Next(reeds));
  }
  return sound;
}

}  // namespace orbel::host::demo
