#pragma once

namespace tesk_audio {

// Nanoseconds of the clock that MonotonicNow reads.
void SleepUntil(long long time);
void SleepFor(long long nanoseconds);

}  // namespace tesk_audio
