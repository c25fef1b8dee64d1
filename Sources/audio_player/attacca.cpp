#include "Sources/audio_player/audio_player.h"
#include "suite/core/gui_dispatcher.h"

void AudioPlayer::LoadNextSongAttacca() {
  LoadSongAttacca_(GetNextSongWithAudio_(""));
}

void AudioPlayer::LoadSongAttacca_(const std::string& songNumber) {
  guiUpdate_.Pause();
  if (!DoLoadSongAndGetIsFinished_(songNumber)) {
    SetLoadSongAttaccaIsWaiting();
    if (!WaitForLoaderAndGetNoErrors_()) {
      notify::guiDispatcher.SendPlayerExceptionNotification();
      return;
    }
  }
  SetAttaccaHasOccurred_(true);
  DoSeek_(0);
  guiUpdate_.ResetAndSeekToTickIndex(showControl_.GetStartTickIndex());
  // The elapsed count runs on through an attacca: this is where the new song begins on it. Until the listener
  // has come so far, the audible tick stays with the song before.
  const long long samplesSoFar = showControl_.GetSampleCount();
  {
    exc::ScopeLock lock(*this);
    attaccaHoldSampleCount_ = static_cast<unsigned>(samplesSoFar);
  }
  samplesTicksConverter_.SetElapsedSampleCountAtAudioStart(samplesSoFar);
  guiUpdate_.Unpause();
}

void AudioPlayer::SetAttaccaState(const std::string& songNumber, unsigned char state) {
  Player::SetAttaccaState(songNumber, state);
  PreLoadAudio_();
}
