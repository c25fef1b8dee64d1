#include "host/demo/sound/envelope.h"
#include "host/demo/sound/oscillators.h"
#include "host/demo/sound/voice.h"

namespace orbel::host::demo {

// A small section: three bows, each a little off in pitch and in its vibrato.
Sound Strings(const Tone& tone) {
  Envelope bow({0.11, 0.8, 0.85, 0.28}, tone.seconds);
  SawWave low(tone.hertz * 0.9968, 0.13);
  SawWave middle(tone.hertz, 0.47);
  SawWave high(tone.hertz * 1.0034, 0.81);
  SineWave vibrato(5.1, 0.01 * (tone.seed % 100));
  LowPass wood(900.0 + 1'900.0 * tone.strength);
  LowPass air(4'800.0);
  Sound sound(bow.FrameCount());
  for (float& sample : sound) {
    const double sway = 0.0022 * static_cast<double>(vibrato.Next());
    const float section = 0.36F * (low.Next(sway) + middle.Next(-0.6 * sway) + high.Next(0.8 * sway));
    sample = tone.strength * bow.Next() * air.Next(wood.Next(section));
  }
  return sound;
}

}  // namespace orbel::host::demo
