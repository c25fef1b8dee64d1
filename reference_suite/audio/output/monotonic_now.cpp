// Alone in its object, so that a program can put another in its place.
#include "reference_suite/audio/output/monotonic_now.h"

#include <ctime>

namespace tesk_audio {

long long MonotonicNow() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

}  // namespace tesk_audio
