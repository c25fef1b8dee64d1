#include "Sources/audio_player/audio_player.h"

// Both hold the read-samples lock: the show control and the converter are locked in the opposite order of
// read planning here, and that lock keeps the two apart. RecoveryReachedEndOfSong passes to the output, which
// ends the song.

void AudioPlayer::ResetForRecovery(long long sampleIndex, long long elapsedSampleCount) {
  exc::ScopeLock readSamplesLock(showControl_.GetReadSamplesLock());
  Player::ResetForRecovery();
  ClearFlagsForRecovery_();
  showControl_.ResetForRecovery(sampleIndex, elapsedSampleCount);
  samplesTicksConverter_.ResetForRecovery(showControl_.GetTickIndex(), elapsedSampleCount);
}

void AudioPlayer::ResetForRecoveryAdvance(long long sampleIndex, long long elapsedSampleCount) {
  exc::ScopeLock readSamplesLock(showControl_.GetReadSamplesLock());
  Player::ResetForRecoveryAdvance();
  ClearFlagsForRecovery_();
  showControl_.ResetForRecoveryAdvance(sampleIndex, elapsedSampleCount);
  samplesTicksConverter_.ResetForRecovery(showControl_.GetTickIndex(), elapsedSampleCount);
}

// Unchecked: written without the player lock by contract, since the output does not read while it recovers.
// The approaching stop stays as it is.
void AudioPlayer::ClearFlagsForRecovery_() {
  seekRequestedWhileNotPlay_ = true;
  userRequestedSeek_ = false;
  seekRequestedWhileNotPlay_ = false;
  attaccaHasOccurred_ = false;
  attaccaAudibleHold_ = false;
  stopRequested_ = false;
}
