#pragma once

namespace tesk_audio {

// Nanoseconds of the monotonic clock, which no clock setting moves; MonotonicNow reads it.
void SleepUntil(long long time);
void SleepFor(long long nanoseconds);

}  // namespace tesk_audio
