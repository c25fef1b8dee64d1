#pragma once

#include <deque>
#include <optional>

namespace orbel::host {

// Foretells when a frame will be heard, from looks at how many have been. A device takes a period of frames
// at a time, so the count stands still and then leaps: the frame at which it stood begins to sound then.
//
// Units      seconds of any steady clock; frames.
// Threads    plain object.
class HeardClock {
 public:
  explicit HeardClock(double rateHz) : rateHz_(rateHz) {}

  void Look(double now, long long heard);
  // Nothing while too little has been heard. Without the lateness of single looks.
  std::optional<double> WhenHeard(long long frame) const;

 private:
  struct Leap {
    double time;
    double zero;  // when frame 0 would have been heard
  };

  const double rateHz_;
  long long heard_ = 0;
  std::deque<Leap> leaps_;  // of the last moments
};

}  // namespace orbel::host
