#pragma once

namespace tesk_audio {

// Bytes that can still be had without driving the machine into swapping; the largest number when the system
// does not tell. Asked before decoding, because the system grants memory that it does not have and kills
// later.
unsigned long long AvailableMemoryBytes();

}  // namespace tesk_audio
