#pragma once

#include "reference_suite/audio/stretch/stretch_factors.h"

namespace tesk_audio {

// A stretcher that works in chunks places an attack by where it found it within a chunk, and not by the
// stretched time: the more it stretches, the further attacks lie from the places of steady sound of the same
// moment. Measured with clicks and short bursts; `stretch` is what the library stretches by before it
// resamples, from 1/4 to 4 (beyond, the nearest of the two holds). In halves of the library's window;
// negative: too early.
// `step`: song frames from one frame that goes in to the next.
double MeasuredAttackOffset(StretchQuality quality, double stretch, double step);
// What comes to it in the first twentieth of a second or so after a beginning.
double MeasuredAttackOffsetAtFirst(StretchQuality quality, double stretch);

}  // namespace tesk_audio
