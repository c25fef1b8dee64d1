#include <array>

#include "host/demo/sound/envelope.h"
#include "host/demo/sound/oscillators.h"
#include "host/demo/sound/voice.h"

namespace orbel::host::demo {

namespace {

struct Partial {
  double ratio;  // to the pitch
  float level;
  double seconds;  // of its decay
};

// A free bar, as of a glockenspiel: its partials are no overtones, and the high ones are gone at once.
constexpr std::array<Partial, 4> kBar{
    {{1.0, 0.70F, 0.42}, {2.756, 0.22F, 0.16}, {5.404, 0.12F, 0.06}, {8.933, 0.05F, 0.03}}};

constexpr double kRingSeconds = 1.1;  // a bar rings on however short the note is

}  // namespace

Sound Bells(const Tone& tone) {
  Sound sound(FramesOfSeconds(kRingSeconds));
  for (const Partial& partial : kBar) {
    if (tone.hertz * partial.ratio > 0.45 * kSampleRate) continue;
    Envelope fall({0.001, partial.seconds, 0.0, 0.2}, kRingSeconds - 0.2);
    SineWave wave(tone.hertz * partial.ratio);
    for (float& sample : sound) sample += tone.strength * partial.level * fall.Next() * wave.Next();
  }
  return sound;
}

}  // namespace orbel::host::demo
