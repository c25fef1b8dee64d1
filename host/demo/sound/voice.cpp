#include "host/demo/sound/voice.h"

#include <cmath>

namespace orbel::host::demo {

Sound PlayVoice(Voice voice, int key, double seconds, int velocity, std::uint32_t seed) {
  const float strength = static_cast<float>(velocity) / 127.0F;
  const Tone tone{440.0 * std::exp2((key - 69) / 12.0), seconds, strength, seed};
  switch (voice) {
    case Voice::kGuitar:
      return Guitar(tone);
    case Voice::kBass:
      return Bass(tone);
    case Voice::kElectricPiano:
      return ElectricPiano(tone);
    case Voice::kStrings:
      return Strings(tone);
    case Voice::kFlute:
      return Flute(tone);
    case Voice::kClarinet:
      return Clarinet(tone);
    case Voice::kAccordion:
      return Accordion(tone);
    case Voice::kBells:
      return Bells(tone);
    case Voice::kDrums:
      return Drum(key, strength, seed);
  }
  return {};
}

}  // namespace orbel::host::demo
