#include "Sources/audio_player/audio_player.h"
#include "suite/audio/audio_sample_output.h"

// Flags that are read once: the output acts on each at most once.

bool AudioPlayer::GetAttaccaHasOccurred() {
  exc::ScopeLock lock(*this);
  return attaccaHasOccurred_.exchange(false);
}

bool AudioPlayer::GetUserRequestedSeek() {
  exc::ScopeLock lock(*this);
  return userRequestedSeek_.exchange(false);
}

bool AudioPlayer::GetSeekRequestedWhileNotPlay() {
  exc::ScopeLock lock(*this);
  return seekRequestedWhileNotPlay_.exchange(false);
}

void AudioPlayer::SetAttaccaHasOccurred_(bool occurred) {
  exc::ScopeLock lock(*this);
  attaccaHasOccurred_ = occurred;
  attaccaAudibleHold_ = occurred;
}

void AudioPlayer::SetLoadSongAttaccaIsWaiting() {
  exc::ScopeLock lock(*this);
  loadSongAttaccaIsWaiting_ = true;
}

void AudioPlayer::SetUserRequestedSeek(bool requested) {
  exc::ScopeLock lock(*this);
  userRequestedSeek_ = requested;
}

bool AudioPlayer::GetStopRequested() {
  exc::ScopeLock lock(*this);
  return stopRequested_;
}

void AudioPlayer::SetStopRequested(bool requested) {
  exc::ScopeLock lock(*this);
  stopRequested_ = requested;
}

bool AudioPlayer::IsOutputInitialized_() {
  exc::ScopeLock lock(*this);
  return outputIsInitialized_;
}

void AudioPlayer::IsOutputInitialized_(bool initialized) {
  exc::ScopeLock lock(*this);
  outputIsInitialized_ = initialized;
}

tesk_audio::AudioSampleOutput* AudioPlayer::Output_() {
  exc::ScopeLock lock(*this);
  return IsOutputInitialized_() ? audioSampleOutput_.get() : nullptr;
}

bool AudioPlayer::OutputRuns_() {
  GetStateBetweenStarts_();  // for its place behind a start that is under way
  tesk_audio::AudioSampleOutput* const output = Output_();
  return output != nullptr && output->GetOutputIsRunning();
}
