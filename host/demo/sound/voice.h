#pragma once

#include <cstdint>

#include "host/demo/score/score.h"
#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

// One note for an instrument.
struct Tone {
  double hertz = 440.0;
  double seconds = 0.0;   // held; what rings on behind it is the instrument's own
  float strength = 0.8F;  // 0 to 1: louder, and for most instruments brighter
  std::uint32_t seed = 0;
};

// The instruments. Each returns the sound from its first frame to silence.
Sound Guitar(const Tone& tone);         // plucked.cpp
Sound Bass(const Tone& tone);           // plucked.cpp
Sound ElectricPiano(const Tone& tone);  // keys.cpp
Sound Accordion(const Tone& tone);      // keys.cpp
Sound Strings(const Tone& tone);        // strings.cpp
Sound Flute(const Tone& tone);          // winds.cpp
Sound Clarinet(const Tone& tone);       // winds.cpp
Sound Bells(const Tone& tone);          // bells.cpp

// `key` as in the General MIDI percussion map; keys without an instrument here are silent (drums.cpp).
Sound Drum(int key, float strength, std::uint32_t seed);

// The note of `voice` on MIDI key `key`, held for `seconds`.
Sound PlayVoice(Voice voice, int key, double seconds, int velocity, std::uint32_t seed);

}  // namespace orbel::host::demo
