#pragma once

#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

inline constexpr float kMasterPeak = 0.70794578F;  // -3 dB below full scale: room for what a lossy codec adds

// Takes out what lies below hearing, rounds off the highest peaks, brings the loudest frame to kMasterPeak,
// and lets the last frames fade, so that a sound that is cut off ends without a click. Silence stays silence.
void Master(StereoSound& sound);

}  // namespace orbel::host::demo
