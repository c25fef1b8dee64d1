#include <algorithm>

#include "Sources/audio_player/audio_player.h"

bool AudioPlayer::GetAudibleTickIndex(unsigned* outTick) {
  if (!IsPlaying()) {
    exc::ScopeLock lock(*this);
    *outTick = std::max(showControl_.GetStartTickIndex(), showControl_.GetLastSeekTickIndex());
    return false;
  }
  // Before the lock is taken: the output is never called from here with the player lock held.
  const long long elapsed = GetElapsedSampleCount();
  exc::ScopeLock lock(*this);
  if (attaccaAudibleHold_ && elapsed <= static_cast<long long>(attaccaHoldSampleCount_)) {
    // The end of the song before is still on its way to the listener.
    *outTick = audibleTickIndex_;
    return true;
  }
  attaccaAudibleHold_ = false;
  const unsigned tick = samplesTicksConverter_.GetTickIndexFromElapsedSampleCount(elapsed);
  if (!approachingStop_) {
    audibleTickIndex_ = tick;
  } else if (tick > approachingStopTickIndex_) {
    audibleTickIndex_ = approachingStopTickIndex_;
  }
  *outTick = audibleTickIndex_;
  return true;
}
