#include "tests/reference_suite/audio/support/running_clock.h"

#include <sys/time.h>
#include <time.h>

namespace running_clock {

long aheadSeconds = 0;

namespace {
time_t Seconds() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec + aheadSeconds;
}
}  // namespace

}  // namespace running_clock

extern "C" {

time_t time(time_t* out) noexcept {
  const time_t now = running_clock::Seconds();
  if (out != nullptr) *out = now;
  return now;
}

int gettimeofday(timeval* now, void*) noexcept {
  now->tv_sec = running_clock::Seconds();
  now->tv_usec = running_clock::aheadSeconds % 1'000'000;
  return 0;
}
}
