#pragma once

#include <cstddef>

namespace tesk_audio {

// How well two sounds go over into one another.
struct SeamMatch {
  std::size_t lag = 0;       // frames of the incoming sound to pass over
  double correlation = 0.0;  // from -1 to 1
};

// Where within `incoming`, which has `length + 2 * reach` frames, the `length` frames of `outgoing` are met
// best. `reach` frames are passed over where the two lie on top of each other in time; up to `near` frames
// beside that are nearly as good, more only for the sake of sounds that would cancel each other out.
// Interleaved. Threads: ANY. Render: allocates nothing.
SeamMatch FindSeam(const float* outgoing, const float* incoming, std::size_t length, unsigned channels,
                   std::size_t reach, std::size_t near);

// Of the same two stretches of sound, on top of each other.
double Correlation(const float* one, const float* other, std::size_t samples);

}  // namespace tesk_audio
