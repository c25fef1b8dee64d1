#pragma once

#include <cstddef>

namespace tesk_audio {

// When the frames that a device asks for leave it. A call can come late, because the machine was busy, but
// never early: of the last calls the one that came least late tells the time of all of them.
//
// Units      frames; nanoseconds of any clock that only grows.
// Threads    one.
// Render     allocates nothing.
class DeviceTimeline {
 public:
  explicit DeviceTimeline(double rateHz) : rateHz_(rateHz) {}

  // A call for `frames` comes. Returns when the first of them leaves; never later than `now`.
  long long Note(long long now, std::size_t frames);
  // What comes from now on has nothing to do with what was before.
  void Forget() { calls_ = 0; }

 private:
  const double rateHz_;
  double asked_ = 0.0;     // frames, since it was made
  long long before_ = 0;   // when frame 0 would have left, by the calls of the round before
  long long current_ = 0;  // and by those of this one
  unsigned calls_ = 0;     // of both rounds; 0: none yet
};

}  // namespace tesk_audio
