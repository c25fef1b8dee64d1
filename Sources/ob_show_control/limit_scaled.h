#pragma once

#include "suite/audio/sample_count.h"

// Shortens a count to `unscaled` samples, in such a way that its scaled view never grows by rounding.
void SetUnscaledAndLimitScaled(long long unscaled, tesk_audio::SampleCount* count);
