#include "Sources/ob_show_control/how_to_play_orbel.h"

#include "suite/midi/timeline.h"

HowToPlayOrbel::HowToPlayOrbel(Transients& transients) : HowToPlay(transients) {}

HowToPlayOrbel::~HowToPlayOrbel() = default;

void HowToPlayOrbel::FollowClock(unsigned /*tickIndex*/, double /*secondsPerTick*/) {}

unsigned HowToPlayOrbel::GetEndTickIndex() {
  return audioEndTickIndex_;
}

void HowToPlayOrbel::SetData(const CL::SongLog& log, const TL::Timeline& timeline, unsigned startTickIndex) {
  audioEndTickIndex_ = timeline.GetAudioEndTicks();
  HowToPlay::SetData(log, timeline, startTickIndex);
}
