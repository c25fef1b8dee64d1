#pragma once

#include <cmath>

namespace tesk_audio {

// How audio is played: tempo scale (2: twice as fast) and transposition. A plain value.
struct StretchFactors {
  double scale = 1.0;
  int semitones = 0;

  // Nothing to change: the audio is played as it was recorded.
  bool AreRecorded() const { return scale == 1.0 && semitones == 0; }
  // Whether it is stretched to more than its length, before it is played faster for a higher key.
  bool DrawOut() const { return std::exp2(semitones / 12.0) > scale; }
  bool operator==(const StretchFactors&) const = default;
};

// What the library is to spend on it.
enum class StretchQuality { Faster, Finer };

// Whether a device waits for the frames: then nothing begins anew by itself that would take longer than there
// is time.
enum class StretchPace { InTime, AtLeisure };

}  // namespace tesk_audio
