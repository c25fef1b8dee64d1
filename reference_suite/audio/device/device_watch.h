#pragma once

namespace tesk_audio {

// Judges by the calls of a device whether it is alive. Nothing else can be relied on: many a server dies, or
// goes wild, without a word.
//
// Units      seconds and frames.
// Threads    one at a time.
class DeviceWatch {
 public:
  enum class Verdict { Fine, Silent, TooFast };

  // What is known at one look.
  struct Look {
    double seconds = 0.0;    // of any clock that only grows
    long long lastCall = 0;  // differs from that of the look before when the device has called since
    long long framesAsked = 0;
    unsigned periodFrames = 0;
    double rateHz = 0.0;
    double patienceSeconds = 0.5;  // for which it may ask for nothing
    bool freewheels = false;       // its pace tells nothing
  };

  // Looks come often, at least twenty times a second. A machine that has been asleep suspects nobody: what
  // counts is the time in which we looked.
  Verdict Judge(const Look& look);

 private:
  Look last_;
  Look windowStart_;
  bool hasLast_ = false;
  double silentSeconds_ = 0.0;
};

}  // namespace tesk_audio
