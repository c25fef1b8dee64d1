#pragma once

namespace tesk_audio {

// Nanoseconds of the monotonic clock, which no clock setting moves. Threads: ANY. Costs no system call.
long long MonotonicNow();

}  // namespace tesk_audio
