#pragma once

#include <atomic>

#include "suite/midi/how_to_play.h"

// The control stream of a song whose time is kept by its audio: nobody's clock moves it, and it ends where
// the audio does.
//
// Threads    ANY.
class HowToPlayOrbel : public HowToPlay {
 public:
  explicit HowToPlayOrbel(Transients& transients);
  ~HowToPlayOrbel() override;

  // Nothing: the audio keeps the time.
  void FollowClock(unsigned tickIndex, double secondsPerTick) override;
  // The timeline's audio end, 0 when none is given.
  unsigned GetEndTickIndex() override;
  void SetData(const CL::SongLog& log, const TL::Timeline& timeline, unsigned startTickIndex) override;

 private:
  std::atomic<unsigned> audioEndTickIndex_{0};
};
